// Short text files of the kernel and of the system, read in one piece.
#pragma once

#include <stddef.h>
#include <sys/types.h>

// Reads at most `capacity` - 1 bytes of the file and ends them with a NUL. Returns the number of bytes, or -1 with
// errno set.
ssize_t readSmallFile(const char* path, char* text, size_t capacity);

// Reads from a descriptor until the end of file or until `capacity` bytes are there. Returns their number, or -1 with
// errno set.
ssize_t readUpTo(int descriptor, char* bytes, size_t capacity);

// Writes all bytes. Returns 0, or -1 with errno set.
int writeAll(int descriptor, const char* bytes, size_t length);
