#include "util/reply_fields.h"

#include <time.h>

#include "platform.h"

static constexpr size_t kTimeDigits = 14;

// Writes a number that is not negative with at least that many digits. Returns where the next letter goes.
static char* putDecimal(char* out, int number, int digits) {
    char reversed[12];
    int length = 0;
    for (unsigned left = static_cast<unsigned>(number); left != 0 || length < digits; left /= 10) {
        reversed[length++] = static_cast<char>('0' + left % 10);
    }
    while (length > 0) *out++ = reversed[--length];
    return out;
}

void putFirmwareVersion(uint8_t (&field)[32]) {
    char text[sizeof field];
    int main = read(kMainVersion);
    int minor = read(kFirmwareVersion);
    char* end = putDecimal(text, main, 1);
    *end++ = '.';
    *putDecimal(end, minor, 2) = '\0';
    putText(field, text);
}

// localtime would look for a new zone once more.
void putLocalTime(uint8_t* field) {
    tm local;
    tzset();
    time_t now = time(nullptr);
    if (localtime_r(&now, &local) == nullptr) return;
    char text[12 + 5 * 2];
    char* end = putDecimal(text, local.tm_year + 1900, 4);
    const int parts[] = {local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
    for (const int part : parts) {
        *end++ = static_cast<char>('0' + part / 10);
        *end++ = static_cast<char>('0' + part % 10);
    }
    const size_t length = static_cast<size_t>(end - text);
    memcpy(field, text, length < kTimeDigits ? length : kTimeDigits);
}

Le16 storedTimezone() {
    int id = get_oem_timezone_id(kTimezoneTable, read(kTimezone));
    return le16(id == -1 ? 0 : static_cast<uint32_t>(id));
}
