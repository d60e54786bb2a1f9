#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "common/complain.h"
#include "common/numbers.h"
#include "platform.h"
#include "store/ini_file.h"
#include "store/ini_value.h"
#include "store/key_table.h"
#include "store/store_file.h"

// The caller's variable may lie anywhere, at odd addresses too.
template <typename Number>
static int giveNumber(const char* text, long length, int64_t lowest, int64_t highest, void* out) {
    int64_t wide;
    if (length > static_cast<long>(kMostText)) return -1;
    if (!parseDecimal(text, static_cast<size_t>(length), lowest, highest, wide)) return -1;
    Number number = static_cast<Number>(wide);
    memcpy(out, &number, sizeof number);
    return 0;
}

static int giveValue(StoreType type, const char* text, long length, void* out) {
    switch (type) {
        case StoreType::Int32:
            return giveNumber<int32_t>(text, length, INT32_MIN, INT32_MAX, out);
        case StoreType::Uint16:
            return giveNumber<uint16_t>(text, length, 0, UINT16_MAX, out);
        case StoreType::Flag:
            return giveNumber<uint8_t>(text, length, 0, UINT8_MAX, out);
        case StoreType::Text:
            memcpy(out, text, strlen(text) + 1);
    }
    return 0;
}

int cfgRead(const char* section, const char* key, void* out) {
    const StoreKey* known = findStoreKey(section, key);
    if (known == nullptr || out == nullptr) return -1;
    const IniText* stored = storeLoad();
    Slice value;
    char text[kMostText + 1];
    if (stored == nullptr || !iniFind(*stored, section, key, value)) return -1;
    long length = iniDecode(value, text);
    return length < 0 ? -1 : giveValue(known->type, text, length, out);
}

template <typename Number>
static long takeNumber(const void* value) {
    Number number;
    memcpy(&number, value, sizeof number);
    return number;
}

static long takeNumber(StoreType type, const void* value) {
    if (type == StoreType::Int32) return takeNumber<int32_t>(value);
    if (type == StoreType::Uint16) return takeNumber<uint16_t>(value);
    return takeNumber<uint8_t>(value);
}

// False for a text that does not end in time.
static bool takeValue(StoreType type, const void* value, char encoded[kMostIniValue + 1]) {
    if (type != StoreType::Text) {
        snprintf(encoded, kMostIniValue + 1, "%ld", takeNumber(type, value));
        return true;
    }
    const char* text = static_cast<const char*>(value);
    if (strnlen(text, kMostText + 1) > kMostText) return false;
    iniEncode(text, encoded);
    return true;
}

int cfgWrite(const char* section, const char* key, const void* value, int) {
    char encoded[kMostIniValue + 1];
    const StoreKey* known = findStoreKey(section, key);
    if (known == nullptr || value == nullptr) {
        complain("the store has no key %s/%s", section != nullptr ? section : "", key != nullptr ? key : "");
        return -1;
    }
    if (!takeValue(known->type, value, encoded)) {
        complain("text for %s/%s refused: longer than %zu bytes", section, key, kMostText);
        return -1;
    }
    return storeSet(section, key, encoded);
}
