#include <stdint.h>

#include "platform.h"

static constexpr int kMostBytes = 255;

static int sextet(char letter) {
    if (letter >= 'A' && letter <= 'Z') return letter - 'A';
    if (letter >= 'a' && letter <= 'z') return letter - 'a' + 26;
    if (letter >= '0' && letter <= '9') return letter - '0' + 52;
    if (letter == '+') return 62;
    if (letter == '/') return 63;
    return -1;
}

int Base64dec(const char* text, char* out) {
    if (text == nullptr || out == nullptr) return -1;
    int length = 0;
    int bits = 0;
    uint32_t gathered = 0;
    for (; length < kMostBytes; text++) {
        int value = sextet(*text);
        if (value < 0) break;
        gathered = gathered << 6 | static_cast<uint32_t>(value);
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        out[length++] = static_cast<char>(static_cast<uint8_t>(gathered >> bits));
    }
    out[length] = '\0';
    return length;
}
