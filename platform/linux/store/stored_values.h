// The values of a store's text, each found and decoded once.
#pragma once

#include <stdint.h>

#include "store/ini_file.h"
#include "store/key_table.h"

// What the store has for one key. Missing stands for malformed values, too, and for numbers outside their type.
struct StoredValue {
    enum class Kind : uint8_t { Missing, Int32, Uint16, Flag, Plain, Quoted };
    Kind kind;
    int32_t number;
    Slice text;  // as it stands in the file; plain text is the value, with at most 255 bytes that count
};

// By the keys' positions in the table.
struct StoredValues {
    StoredValue values[kStoreKeyCount];
};

// The slices of `values` point into `text`.
void takeValues(const IniText& text, StoredValues& values);
