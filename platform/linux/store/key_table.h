// Every key of the configuration store, with its type.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/slice.h"
#include "store_keys.h"

enum class StoreType : uint8_t { Text, Int32, Uint16, Flag };

struct StoreKey {
    const char* section;
    const char* name;
    StoreType type;
};

#define QVP_COUNT_KEY(constant, section, name) kPositionOf_##constant,
enum { QVP_STORE_KEYS(QVP_COUNT_KEY, QVP_COUNT_KEY, QVP_COUNT_KEY, QVP_COUNT_KEY) kStoreKeyCount };
#undef QVP_COUNT_KEY

// The key's position in the table; -1 for a key that the store does not have, and for a null name.
int storeKeyNumber(const char* section, const char* name);
int storeKeyNumber(Slice section, Slice name);

const StoreKey& storeKey(int number);
