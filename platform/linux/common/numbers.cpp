#include "common/numbers.h"

// Far beyond every limit, and ten times it still fits.
static constexpr int64_t kBeyond = INT64_C(1) << 40;

bool parseDecimal(const char* text, size_t length, int64_t lowest, int64_t highest, int64_t& number) {
    bool negative = length > 0 && text[0] == '-';
    size_t position = negative ? 1 : 0;
    if (position == length) return false;
    int64_t magnitude = 0;
    for (; position < length; position++) {
        char digit = text[position];
        if (digit < '0' || digit > '9') return false;
        magnitude = magnitude * 10 + (digit - '0');
        if (magnitude > kBeyond) return false;
    }
    int64_t value = negative ? -magnitude : magnitude;
    if (value < lowest || value > highest) return false;
    number = value;
    return true;
}
