#include "time_zone/zone_file.h"

#include <stdlib.h>
#include <string.h>

#include "time_zone/zone_text.h"

// Two blocks alike, numbers big-endian, times in 4 bytes in the first and in 8 in the second:
//   4 "TZif"   1 version   15 zeros
//   4 ×6 counts: UT flags, standard flags, leap seconds, transitions, types, abbreviation bytes
//   transition times   a type byte for each   types: 4 offset, 1 daylight saving, 1 abbreviation   abbreviations
// then, between two newlines, the POSIX text that holds from the last transition on.
//
// Some libraries ignore that text in a file without transitions. So there is one, to standard time, as early as the
// field can say. In the second block that is before the universe began, and the text rules over all times. The four
// bytes of the first block are all that programs with a 32-bit clock of old see: standard time.
//
// The version is 2, or 3 for a text with hours that 2 does not allow.
static constexpr int64_t kEarliestIn4Bytes = INT32_MIN;
static constexpr int64_t kEarliestIn8Bytes = -(INT64_C(1) << 59);

static constexpr int kHeaderSize = 44;
static constexpr int kLongestName = 16;
static constexpr int kLargestBlock = kHeaderSize + 8 + 1 + 6 + kLongestName + 1;
static constexpr int kLargestTextSize = kZoneFileSize - 2 * kLargestBlock - 2;
static_assert(kZoneTextSize <= kLargestTextSize);

static uint8_t* putNumber(uint8_t* at, int64_t number, int width) {
    uint64_t bits = static_cast<uint64_t>(number);
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) *at++ = static_cast<uint8_t>(bits >> shift);
    return at;
}

static uint8_t* putBytes(uint8_t* at, const void* bytes, int length) {
    memcpy(at, bytes, static_cast<size_t>(length));
    return at + length;
}

// Changes before or beyond their day, such as "M3.5.0/-1" and "M3.4.4/26".
static bool hasFarHours(const char* text) {
    for (const char* at = strchr(text, '/'); at != nullptr; at = strchr(at + 1, '/')) {
        if (at[1] == '-' || atoi(at + 1) > 24) return true;
    }
    return false;
}

static uint8_t* putHeader(uint8_t* at, const char* text, int nameLength) {
    const int counts[6] = {0, 0, 0, 1, 1, nameLength + 1};
    at = putBytes(at, "TZif", 4);
    *at++ = hasFarHours(text) ? '3' : '2';
    memset(at, 0, 15);
    at += 15;
    for (int count : counts) at = putNumber(at, count, 4);
    return at;
}

static uint8_t* putBlock(uint8_t* at, const char* text, const StandardTime& standard, int64_t earliest, int width) {
    at = putHeader(at, text, standard.nameLength);
    at = putNumber(at, earliest, width);
    *at++ = 0;
    at = putNumber(at, standard.offset, 4);
    *at++ = 0;
    *at++ = 0;
    at = putBytes(at, text + standard.nameAt, standard.nameLength);
    *at++ = '\0';
    return at;
}

int makeZoneFile(const char* text, uint8_t file[kZoneFileSize]) {
    int length = static_cast<int>(strnlen(text, kLargestTextSize));
    StandardTime standard = readStandardTime(text);
    if (length == kLargestTextSize || standard.nameLength > kLongestName) return -1;

    uint8_t* at = putBlock(file, text, standard, kEarliestIn4Bytes, 4);
    at = putBlock(at, text, standard, kEarliestIn8Bytes, 8);
    *at++ = '\n';
    at = putBytes(at, text, length);
    *at++ = '\n';
    return static_cast<int>(at - file);
}
