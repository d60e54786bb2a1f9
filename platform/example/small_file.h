#pragma once

#include <stddef.h>

// Reads a whole file of less than `size` bytes and puts a NUL behind it. Returns its length, or -1 for one that cannot
// be read or has more.
int readSmallFile(const char* path, char* text, size_t size);

// Puts the bytes into the file at the descriptor, all of them. Returns 0, or -1.
int writeAll(int descriptor, const char* bytes, size_t length);
