// One UDP socket that sends out of a chosen interface, and knows on which one a datagram came in.
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <span>

#include "protocol/packet_header.h"
#include "qvpctl/interfaces.h"

struct Datagram {
    // A byte more than a valid one has, so that a longer one is seen to be longer.
    std::array<uint8_t, kDatagramSize + 1> buffer;
    size_t length;
    unsigned interfaceIndex;  // where it came in

    std::span<const uint8_t> bytes() const { return {buffer.data(), length}; }
};

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

    // To 255.255.255.255:`port` out of that interface, from the address the system has for it. 0, or an errno value.
    [[nodiscard]] int broadcast(const Interface& interface, uint16_t port, std::span<const uint8_t> bytes) const;

    std::optional<Datagram> receive() const;  // nothing when none is waiting

    // Waits for a datagram until `deadline`.
    std::optional<Datagram> receiveUntil(std::chrono::steady_clock::time_point deadline) const;

private:
    UdpSocket();
    void enable(int level, int option) const;
    void bindTo(uint32_t address, uint16_t port) const;

    int descriptor_;
};
