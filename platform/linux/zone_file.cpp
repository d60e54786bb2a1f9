#include "zone_file.h"

#include "zone_text.h"

#include <string.h>

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
// The version is 2 even for hours beyond a day ("M3.4.4/26"), which version 3 was made for: no library asks for it
// before it takes such hours, and some know no version but 2.
constexpr char kVersion = '2';
constexpr int64_t kEarliestIn4Bytes = INT32_MIN;
constexpr int64_t kEarliestIn8Bytes = -(INT64_C(1) << 59);

constexpr int kHeaderSize = 44;
constexpr int kLongestName = 16;
constexpr int kLargestBlock = kHeaderSize + 8 + 1 + 6 + kLongestName + 1;
constexpr int kLargestTextSize = kZoneFileSize - 2 * kLargestBlock - 2;
static_assert(kZoneTextSize <= kLargestTextSize);

static uint8_t* putNumber(uint8_t* at, int64_t number, int width) {
    const uint64_t bits = (uint64_t)number;
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) *at++ = (uint8_t)(bits >> shift);
    return at;
}

static uint8_t* putBytes(uint8_t* at, const void* bytes, int length) {
    memcpy(at, bytes, (size_t)length);
    return at + length;
}

static uint8_t* putHeader(uint8_t* at, int nameLength) {
    const int counts[6] = {0, 0, 0, 1, 1, nameLength + 1};
    at = putBytes(at, "TZif", 4);
    *at++ = kVersion;
    memset(at, 0, 15);
    at += 15;
    for (int count : counts) at = putNumber(at, count, 4);
    return at;
}

static uint8_t* putBlock(uint8_t* at, const char* text, const StandardTime& standard, int64_t earliest, int width) {
    at = putHeader(at, standard.nameLength);
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
    const int length = (int)strnlen(text, kLargestTextSize);
    const StandardTime standard = readStandardTime(text);
    if (length == kLargestTextSize || standard.nameLength > kLongestName) return -1;

    uint8_t* at = putBlock(file, text, standard, kEarliestIn4Bytes, 4);
    at = putBlock(at, text, standard, kEarliestIn8Bytes, 8);
    *at++ = '\n';
    at = putBytes(at, text, length);
    *at++ = '\n';
    return (int)(at - file);
}
