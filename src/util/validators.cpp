#include "util/validators.h"

#include <string.h>

static constexpr int kMacLength = 6;

int checkMacAddress(const uint8_t* first, int firstLength, const uint8_t* second, int secondLength) {
    if (first == nullptr || second == nullptr) return -1;
    if (firstLength < kMacLength || secondLength < kMacLength) return -1;
    return memcmp(first, second, kMacLength) == 0 ? 0 : -1;
}

void rtrim(char* text, int size) {
    for (int i = size - 1; i >= 0; i--) {
        if (text[i] == '\0') continue;
        if (text[i] != ' ') return;
        text[i] = '\0';
    }
}

static bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

int checkHex(const char* text) {
    if (text == nullptr) return -1;
    for (; *text != '\0'; text++) {
        if (!isHexDigit(*text)) return -1;
    }
    return 0;
}

int checkAscii(const char* text) {
    if (text == nullptr) return -1;
    for (; *text != '\0'; text++) {
        if (static_cast<int8_t>(*text) < ' ') return -1;
    }
    return 0;
}
