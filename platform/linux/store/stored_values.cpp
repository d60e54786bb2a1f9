#include "store/stored_values.h"

#include <stddef.h>
#include <string.h>

#include "common/numbers.h"
#include "store/ini_value.h"

static bool isNumberOf(StoreType type, const char* text, long length, int64_t& number) {
    static constexpr int64_t kLimits[][2] = {
        {0,         0         },
        {INT32_MIN, INT32_MAX },
        {0,         UINT16_MAX},
        {0,         UINT8_MAX }
    };  // in the order of StoreType
    const int64_t(&limits)[2] = kLimits[static_cast<int>(type)];
    return length <= static_cast<long>(kMostText) &&
           parseDecimal(text, static_cast<size_t>(length), limits[0], limits[1], number);
}

static StoredValue::Kind kindOf(StoreType numbers) {
    if (numbers == StoreType::Int32) return StoredValue::Kind::Int32;
    return numbers == StoreType::Uint16 ? StoredValue::Kind::Uint16 : StoredValue::Kind::Flag;
}

static StoredValue valueOf(StoreType type, Slice value) {
    char text[kMostText + 1];
    const long length = iniDecode(value, text);
    StoredValue result = {StoredValue::Kind::Missing, 0, value};
    if (length < 0) return result;
    if (type == StoreType::Text) {
        const bool isQuoted = value.length > 0 && value.text[0] == '"';
        result.kind = isQuoted ? StoredValue::Kind::Quoted : StoredValue::Kind::Plain;
        return result;
    }
    int64_t number = 0;
    if (!isNumberOf(type, text, length, number)) return result;
    result.kind = kindOf(type);
    result.number = static_cast<int32_t>(number);
    return result;
}

// Of a key that stands twice the first counts.
void takeValues(const IniText& text, StoredValues& values) {
    bool isTaken[kStoreKeyCount] = {};
    Slice section = {};
    IniLine line;
    memset(&values, 0, sizeof values);
    for (const char* start = iniFirstLine(text); iniTakeLine(text, start, line); start = line.next) {
        if (line.kind == IniKind::Section) section = line.name;
        if (line.kind != IniKind::Field || section.text == nullptr) continue;
        const int key = storeKeyNumber(section, line.name);
        if (key < 0 || isTaken[key]) continue;
        isTaken[key] = true;
        values.values[key] = valueOf(storeKey(key).type, line.value);
    }
}

void takeNewValue(int key, size_t length, StoredValues& values) {
    const Slice old = values.values[key].text;
    const ptrdiff_t moved = static_cast<ptrdiff_t>(length) - static_cast<ptrdiff_t>(old.length);
    for (StoredValue& value : values.values) {
        if (value.text.text > old.text) value.text.text += moved;
    }
    values.values[key] = valueOf(storeKey(key).type, {old.text, length});
}
