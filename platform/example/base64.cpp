// Nothing here is a board's own: take it as it is.
#include <stdint.h>
#include <string.h>

#include "platform.h"

static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
static constexpr int kMostBytes = 255;

// Returns the number of bytes in front of the NUL, or -1 for a null argument. Any byte outside the alphabet is the end
// of the text, the padding among them.
int Base64dec(const char* text, char* out) {
    if (text == nullptr || out == nullptr) return -1;
    uint32_t bits = 0;
    int count = 0;
    int length = 0;
    for (; *text != '\0' && length < kMostBytes; text++) {
        const char* letter = strchr(kAlphabet, *text);
        if (letter == nullptr) break;
        bits = bits << 6 | static_cast<uint32_t>(letter - kAlphabet);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        out[length++] = static_cast<char>(static_cast<uint8_t>(bits >> count));
    }
    out[length] = '\0';
    return length;
}
