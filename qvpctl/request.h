// The header of what the tool sends, and the test whether a datagram answers it.
#pragma once

#include <span>

#include "protocol/discovery.h"

// A command family: cameras serve both, with small differences.
struct Family {
    uint16_t protocol;
    size_t discoveryLength;  // of its discovery reply
};

constexpr Family kPrimaryFamily = {kPrimaryProtocol, sizeof(DiscoveryReply)};
constexpr Family kLandapFamily = {kLandapProtocol, sizeof(LandapDiscoveryReply)};

// Hard to guess for one who does not see the request.
uint16_t randomSequence();

// A request to every camera, without payload.
PacketHeader requestToAll(const Family& family, uint16_t opcode, uint16_t sequence);

std::span<const uint8_t> bytesOf(const PacketHeader& header);

// True for a well-formed reply to that request; what stands behind the header is not looked at.
bool answers(std::span<const uint8_t> datagram, const PacketHeader& request);
