// The header of what the tool sends, and the test whether a datagram answers it.
#pragma once

#include <span>

#include "protocol/packet_header.h"

// Hard to guess for one who does not see the request.
uint16_t randomSequence();

// A request to every camera in the family of that `protocol`, without payload.
PacketHeader requestToAll(uint16_t protocol, uint16_t opcode, uint16_t sequence);

std::span<const uint8_t> bytesOf(const PacketHeader& header);

// True for a well-formed reply to that request; what stands behind the header is not looked at.
bool answers(std::span<const uint8_t> datagram, const PacketHeader& request);
