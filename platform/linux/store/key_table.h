// Every key of the configuration store, with its type.
#pragma once

#include <stddef.h>
#include <stdint.h>

enum class StoreType : uint8_t { Text, Int32, Uint16, Flag };

struct StoreKey {
    const char* section;
    const char* name;
    StoreType type;
};

// Null for a key that the store does not have, and for a null name.
const StoreKey* findStoreKey(const char* section, const char* name);
