// The pieces every datagram is made of: bytes in wire order, never wider.
//
// Nothing here is ever read through a cast to a wider integer, so neither the alignment of a buffer nor the byte order
// of the host can matter.
#pragma once

#include <stdint.h>

// Least significant byte first.
struct Le16 {
    uint8_t bytes[2];
};
struct Le32 {
    uint8_t bytes[4];
};

// Most significant byte first.
struct Be16 {
    uint8_t bytes[2];
};
struct Be32 {
    uint8_t bytes[4];
};

// Address or mask, first octet first.
struct Ipv4 {
    uint8_t bytes[4];
};

struct Mac {
    uint8_t bytes[6];
};

constexpr uint16_t load(Le16 value) { return static_cast<uint16_t>(value.bytes[0] | value.bytes[1] << 8); }
constexpr uint16_t load(Be16 value) { return static_cast<uint16_t>(value.bytes[0] << 8 | value.bytes[1]); }

constexpr uint32_t load(Le32 value) {
    return static_cast<uint32_t>(value.bytes[0]) | static_cast<uint32_t>(value.bytes[1]) << 8 |
           static_cast<uint32_t>(value.bytes[2]) << 16 | static_cast<uint32_t>(value.bytes[3]) << 24;
}

constexpr uint32_t load(Be32 value) {
    return load(Le32{
        {value.bytes[3], value.bytes[2], value.bytes[1], value.bytes[0]}
    });
}

constexpr Le16 le16(uint32_t value) {
    return {
        {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)}
    };
}

constexpr Le32 le32(uint32_t value) {
    return {
        {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value >> 16),
         static_cast<uint8_t>(value >> 24)}
    };
}

constexpr Be16 be16(uint32_t value) {
    return {
        {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)}
    };
}

constexpr Be32 be32(uint32_t value) {
    return {
        {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
         static_cast<uint8_t>(value)}
    };
}
