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

// A reply of zeros behind its header, from the same camera: sequence 0x1234, primary family.
Bytes replyTo(uint16_t opcode, size_t length, uint8_t status = 0);

// A request as it is handed to a conversation: `length` bytes, the header left to it, administrator "admin" with the
// password "secret".
Bytes protectedBytes(size_t length);
