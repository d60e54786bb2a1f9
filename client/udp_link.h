// The link over UDP.
#pragma once

#include <functional>

#include "client/link.h"
#include "client/udp_socket.h"

namespace client {

class UdpLink : public Link {
public:
    enum class Hears { Replies, RepliesAndReports };  // presence reports come to a port of their own

    // A descriptor that becomes readable when the user wants to stop; -1: never.
    explicit UdpLink(Hears hears, int stop = -1);

    [[nodiscard]] int send(Ipv4 address, std::span<const uint8_t> bytes) override;
    [[nodiscard]] int broadcast(const Interface& interface, std::span<const uint8_t> bytes) override;
    std::optional<Incoming> receiveUntil(SteadyClock::time_point deadline) override;
    SteadyClock::time_point now() const override { return SteadyClock::now(); }

    bool isStopped() const { return isStopped_; }

private:
    std::optional<Incoming> receiveReady();
    static std::optional<Incoming> receiveFrom(const UdpSocket& socket, const uint8_t (&magic)[2]);

    UdpSocket requests_;
    std::optional<UdpSocket> reports_;
    int stop_;
    bool isStopped_ = false;
};

}  // namespace client
