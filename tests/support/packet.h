// Datagrams as tests write them: zero, but for the bytes put at an offset.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace unit {

using Bytes = std::vector<std::uint8_t>;

class Packet {
public:
    explicit Packet(std::size_t size) : bytes_(size) {}

    Packet& put(std::size_t at, std::initializer_list<std::uint8_t> bytes) { return put(at, Bytes(bytes)); }
    Packet& put(std::size_t at, const std::string& text) { return put(at, Bytes(text.begin(), text.end())); }
    Packet& put(std::size_t at, const Bytes& bytes);
    Packet& fill(std::size_t at, std::size_t count, std::uint8_t byte);

    const Bytes& bytes() const { return bytes_; }
    Bytes first(std::size_t count) const {
        return {bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(count)};
    }

private:
    Bytes bytes_;
};

// Says where two datagrams first differ.
testing::AssertionResult sameBytes(const Bytes& expected, const Bytes& actual);

}  // namespace unit
