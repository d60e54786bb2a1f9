// The header of what a tool sends, and the test whether a datagram answers it.
#pragma once

#include <cstddef>
#include <span>

#include "protocol/packet_header.h"

namespace client {

// The two command families: cameras serve both, with small differences.
enum class Family : uint16_t { Landap = kLandapProtocol, Primary = kPrimaryProtocol };

// Hard to guess for one who does not see the request.
uint16_t randomSequence();

// A request to every camera, of `length` bytes in all.
PacketHeader requestToAll(Family family, uint16_t opcode, uint16_t sequence, size_t length = sizeof(PacketHeader));

// A request to the camera with that MAC alone.
PacketHeader requestTo(Mac mac, Family family, uint16_t opcode, uint16_t sequence, size_t length);

std::span<const uint8_t> bytesOf(const PacketHeader& header);

// True for a well-formed reply to that request; what stands behind the header is not looked at. A request to one
// camera is answered by that camera only.
bool answers(std::span<const uint8_t> datagram, const PacketHeader& request);

}  // namespace client
