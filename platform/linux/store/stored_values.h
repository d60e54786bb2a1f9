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
    Slice text;  // as it stands in the file, null when it does not; of plain text at most 255 bytes count
};

// By the keys' positions in the table.
struct StoredValues {
    StoredValue values[kStoreKeyCount];
};

// The slices of `values` point into `text`.
void takeValues(const IniText& text, StoredValues& values);

// Follows the text of a key that it has: what stood there is now `length` bytes long, and everything behind has moved.
void takeNewValue(int key, size_t length, StoredValues& values);
