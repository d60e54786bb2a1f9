// Datagrams as a camera sends them, written out byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

void put(Bytes& datagram, size_t offset, const Bytes& bytes);
void putText(Bytes& datagram, size_t offset, const std::string& text);

// The reply to a discovery with sequence 0x1234: 505 bytes, or 334 in the family of protocol 1.
Bytes discoveryReply();
Bytes landapDiscoveryReply();

// 317 bytes, sequence 7.
Bytes presenceReport();
