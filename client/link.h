// What a conversation sends and receives through: UDP sockets, or what a test puts in their place.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "client/interfaces.h"
#include "protocol/bytes.h"

namespace client {

using SteadyClock = std::chrono::steady_clock;

struct Incoming {
    std::vector<uint8_t> bytes;
    Ipv4 sender;
    unsigned interfaceIndex;  // where it came in
};

class Link {
public:
    virtual ~Link() = default;
    // Each returns 0, or an errno value. `broadcast` goes to 255.255.255.255 out of that interface.
    [[nodiscard]] virtual int send(Ipv4 address, std::span<const uint8_t> bytes) = 0;
    [[nodiscard]] virtual int broadcast(const Interface& interface, std::span<const uint8_t> bytes) = 0;

    // The next datagram, or nothing once the deadline has passed or the user wants to stop.
    virtual std::optional<Incoming> receiveUntil(SteadyClock::time_point deadline) = 0;
    virtual SteadyClock::time_point now() const = 0;
};

}  // namespace client
