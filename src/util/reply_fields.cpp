#include "util/reply_fields.h"

#include <stdio.h>
#include <time.h>

#include "platform.h"

static constexpr size_t kTimeDigits = 14;

void putFirmwareVersion(uint8_t (&field)[32]) {
    char text[sizeof field];
    int main = read(kMainVersion);
    int minor = read(kFirmwareVersion);
    snprintf(text, sizeof text, "%d.%02d", main, minor);
    putText(field, text);
}

void putLocalTime(uint8_t* field) {
    tzset();
    time_t now = time(nullptr);
    const tm* local = localtime(&now);
    if (local == nullptr) return;
    char text[80];
    snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d", local->tm_year + 1900, local->tm_mon + 1, local->tm_mday,
             local->tm_hour, local->tm_min, local->tm_sec);
    memcpy(field, text, strnlen(text, kTimeDigits));
}

Le16 storedTimezone() {
    int id = get_oem_timezone_id(kTimezoneTable, read(kTimezone));
    return le16(id == -1 ? 0 : static_cast<uint32_t>(id));
}
