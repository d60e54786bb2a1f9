#pragma once

#include <stddef.h>
#include <stdint.h>

// Reads the whole text as one decimal number, with a minus sign or without a sign. False when it is anything else or
// outside the limits; `number` is then untouched.
bool parseDecimal(const char* text, size_t length, int64_t lowest, int64_t highest, int64_t& number);

// The value of a hexadecimal digit, -1 for any other letter.
inline int hexDigit(char letter) {
    if (letter >= '0' && letter <= '9') return letter - '0';
    if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
    if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
    return -1;
}
