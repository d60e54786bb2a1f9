// Addresses of one network that are handed out one after the other.
#pragma once

#include <cstdint>
#include <string>

#include "protocol/bytes.h"

namespace client {

struct AddressRange {
    uint32_t first = 0, last = 0;  // as numbers, to count with
    int prefixLength = 0;

    bool contains(uint32_t address) const { return address >= first && address <= last; }
    size_t size() const { return size_t{last} - first + 1; }
    std::string text() const;                    // "192.0.2.20-69/24", as it is shown
    std::string textOf(uint32_t address) const;  // one of them, with the prefix length
};

uint32_t numberOf(Ipv4 address);

// "192.0.2.20-69/24", "192.0.2.20-192.0.3.69/23", or a single "192.0.2.20/24". Throws Error BadValue.
AddressRange parseAddressRange(const std::string& text);

}  // namespace client
