// A piece of a text.
#pragma once

#include <stddef.h>
#include <string.h>

struct Slice {
    const char* text;  // not NUL-terminated
    size_t length;
};

inline bool sliceEquals(Slice slice, const char* text) {
    return strlen(text) == slice.length && memcmp(text, slice.text, slice.length) == 0;
}
