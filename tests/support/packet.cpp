#include "support/packet.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace unit {

Packet& Packet::put(std::size_t at, const Bytes& bytes) {
    if (at + bytes.size() > bytes_.size()) throw std::out_of_range("bytes behind the datagram's end");
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
    return *this;
}

Packet& Packet::fill(std::size_t at, std::size_t count, std::uint8_t byte) { return put(at, Bytes(count, byte)); }

static std::string hex(const Bytes& bytes, std::size_t from) {
    std::string text;
    for (std::size_t at = from; at < std::min(bytes.size(), from + 16); ++at) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", bytes[at]);
        text += digits;
    }
    return text;
}

testing::AssertionResult sameBytes(const Bytes& expected, const Bytes& actual) {
    const auto [left, right] = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
    if (left == expected.end() && right == actual.end()) return testing::AssertionSuccess();
    const auto at = static_cast<std::size_t>(left - expected.begin());
    return testing::AssertionFailure() << expected.size() << " bytes expected, " << actual.size()
                                       << " found; first difference at byte " << at
                                       << "\n  expected: " << hex(expected, at) << "\n  found:    " << hex(actual, at);
}

}  // namespace unit
