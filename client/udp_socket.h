// One UDP socket that sends out of a chosen interface, and knows on which one a datagram came in.
#pragma once

#include <optional>
#include <span>

#include "client/interfaces.h"
#include "client/link.h"
#include "protocol/packet_header.h"

namespace client {

class UdpSocket {
public:
    static UdpSocket forRequests();  // a free port: what comes back are replies

    // Takes what is broadcast to `port`, beside any other program on that port: bound to the broadcast address, it can
    // never be given a datagram that was sent to this machine alone.
    static UdpSocket forBroadcasts(uint16_t port);

    UdpSocket(UdpSocket&& other) noexcept;
    UdpSocket& operator=(UdpSocket&&) = delete;
    ~UdpSocket();

    int descriptor() const { return descriptor_; }

    // Each returns 0, or an errno value. `broadcast` goes to 255.255.255.255 out of that interface, from the address
    // that the system has for it.
    [[nodiscard]] int send(Ipv4 address, uint16_t port, std::span<const uint8_t> bytes) const;
    [[nodiscard]] int broadcast(const Interface& interface, uint16_t port, std::span<const uint8_t> bytes) const;

    // Nothing when none is waiting. One that is longer than any valid one comes cut, but still longer.
    std::optional<Incoming> receive() const;

private:
    UdpSocket();
    void enable(int level, int option) const;
    void growReceiveBuffer() const;
    void bindTo(uint32_t address, uint16_t port) const;

    int descriptor_;
};

}  // namespace client
