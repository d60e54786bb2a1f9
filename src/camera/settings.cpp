#include "camera/settings.h"

#include <string.h>

#include "camera/request.h"
#include "platform.h"

void read(TextKey key, char (&text)[kTextSize]) {
    memset(text, 0, sizeof text);
    cfgRead(key.section, key.name, text);
    text[kTextSize - 1] = '\0';
}

template <typename Value, typename Key>
static Value readCleared(Key key) {
    Value value = 0;
    cfgRead(key.section, key.name, &value);
    return value;
}

int32_t read(NumberKey key) { return readCleared<int32_t>(key); }
uint16_t read(ShortKey key) { return readCleared<uint16_t>(key); }
uint8_t read(FlagKey key) { return readCleared<uint8_t>(key); }

void readInto(FlagKey key, uint8_t& value) { cfgRead(key.section, key.name, &value); }

template <typename Key>
static void writeThrough(Key key, const void* value) {
    cfgWrite(key.section, key.name, value, kWriteThrough);
    requestTookLong = true;
}

void write(TextKey key, const char (&text)[kTextSize]) { writeThrough(key, text); }
void write(NumberKey key, int32_t value) { writeThrough(key, &value); }
void write(FlagKey key, uint8_t value) { writeThrough(key, &value); }
