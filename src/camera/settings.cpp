#include "camera/settings.h"

#include <string.h>

#include "platform.h"

static constexpr int kWriteThrough = 1;

void readText(const char* section, const char* key, char (&text)[kTextSize]) {
    memset(text, 0, sizeof text);
    cfgRead(section, key, text);
    text[kTextSize - 1] = '\0';
}

int32_t readNumber(const char* section, const char* key) {
    int32_t value = 0;
    cfgRead(section, key, &value);
    return value;
}

uint16_t readNumber16(const char* section, const char* key) {
    uint16_t value = 0;
    cfgRead(section, key, &value);
    return value;
}

uint8_t readFlag(const char* section, const char* key) {
    uint8_t value = 0;
    cfgRead(section, key, &value);
    return value;
}

void writeText(const char* section, const char* key, const char* text) { cfgWrite(section, key, text, kWriteThrough); }

void writeNumber(const char* section, const char* key, int32_t value) { cfgWrite(section, key, &value, kWriteThrough); }

void writeFlag(const char* section, const char* key, uint8_t value) { cfgWrite(section, key, &value, kWriteThrough); }
