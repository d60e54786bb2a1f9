// Small checks on the fields of a request. Results: 0 it holds, -1 it does not (or a null argument).
#pragma once

#include <stdint.h>

// Both strings have at least six bytes and the same first six.
int checkMacAddress(const uint8_t* first, int firstLength, const uint8_t* second, int secondLength);

// Replaces the blanks at the end of a field `size` bytes wide by NULs, also those in front of NUL padding.
void rtrim(char* text, int size);

// Only hexadecimal digits. The empty text holds.
int checkHex(const char* text);

// Only bytes from 32 to 127. The empty text holds.
int checkAscii(const char* text);
