// The layouts of protocol/ and the bytes of a datagram, one copied to the other.
#pragma once

#include <cstring>
#include <span>
#include <stdexcept>
#include <vector>

namespace client {

// A datagram taken apart. Whoever asks has seen that it is long enough; throws std::length_error otherwise.
template <typename Layout>
Layout layoutOf(std::span<const uint8_t> datagram) {
    static_assert(alignof(Layout) == 1);
    if (datagram.size() < sizeof(Layout)) throw std::length_error("a datagram is shorter than its layout");
    Layout layout;
    memcpy(&layout, datagram.data(), sizeof layout);
    return layout;
}

template <typename Layout>
std::vector<uint8_t> bytesOfLayout(const Layout& layout, size_t length = sizeof(Layout)) {
    static_assert(alignof(Layout) == 1);
    std::vector<uint8_t> bytes(length);
    memcpy(bytes.data(), &layout, length);
    return bytes;
}

}  // namespace client
