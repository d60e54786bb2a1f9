#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "common/complain.h"
#include "platform.h"
#include "store/ini_file.h"
#include "store/ini_value.h"
#include "store/key_table.h"
#include "store/store_file.h"

// The caller's variable may lie anywhere, at odd addresses too.
template <typename Number>
static int giveNumber(const StoredValue& value, void* out) {
    const Number number = static_cast<Number>(value.number);
    memcpy(out, &number, sizeof number);
    return 0;
}

static int giveText(const char* text, size_t length, char* out) {
    memcpy(out, text, length);
    out[length] = '\0';
    return 0;
}

static int giveQuoted(const StoredValue& value, char* out) {
    char text[kMostText + 1];
    iniDecode(value.text, text);
    return giveText(text, strlen(text), out);
}

static int give(const StoredValue& value, void* out) {
    switch (value.kind) {
        case StoredValue::Kind::Int32:
            return giveNumber<int32_t>(value, out);
        case StoredValue::Kind::Uint16:
            return giveNumber<uint16_t>(value, out);
        case StoredValue::Kind::Flag:
            return giveNumber<uint8_t>(value, out);
        case StoredValue::Kind::Plain:
            return giveText(value.text.text, value.text.length < kMostText ? value.text.length : kMostText,
                            static_cast<char*>(out));
        case StoredValue::Kind::Quoted:
            return giveQuoted(value, static_cast<char*>(out));
        case StoredValue::Kind::Missing:
            break;
    }
    return -1;
}

int cfgRead(const char* section, const char* key, void* out) {
    const int number = storeKeyNumber(section, key);
    const StoredValues* stored = number >= 0 && out != nullptr ? storeLoad() : nullptr;
    return stored != nullptr ? give(stored->values[number], out) : -1;
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
    const int number = storeKeyNumber(section, key);
    if (number < 0 || value == nullptr) {
        complain("the store has no key %s/%s", section != nullptr ? section : "", key != nullptr ? key : "");
        return -1;
    }
    if (!takeValue(storeKey(number).type, value, encoded)) {
        complain("text for %s/%s refused: longer than %zu bytes", section, key, kMostText);
        return -1;
    }
    return storeSet(number, encoded);
}
