#include "client/udp_link.h"

#include <poll.h>

#include <cerrno>
#include <cstring>

#include "client/error.h"

namespace client {

UdpLink::UdpLink(Hears hears, int stop) : requests_(UdpSocket::forRequests()), stop_(stop) {
    if (hears == Hears::RepliesAndReports) reports_.emplace(UdpSocket::forBroadcasts(kPort));
}

int UdpLink::send(Ipv4 address, std::span<const uint8_t> bytes) { return requests_.send(address, kPort, bytes); }

int UdpLink::broadcast(const Interface& interface, std::span<const uint8_t> bytes) {
    return requests_.broadcast(interface, kPort, bytes);
}

// Replies come to the port of the request, reports to everybody; what comes in at the other's place is neither.
std::optional<Incoming> UdpLink::receiveFrom(const UdpSocket& socket, const uint8_t (&magic)[2]) {
    while (auto incoming = socket.receive()) {
        if (incoming->bytes.size() >= sizeof magic && memcmp(incoming->bytes.data(), magic, sizeof magic) == 0) {
            return incoming;
        }
    }
    return std::nullopt;
}

std::optional<Incoming> UdpLink::receiveReady() {
    if (auto incoming = receiveFrom(requests_, kReplyMagic)) return incoming;
    return reports_ ? receiveFrom(*reports_, kPresenceMagic) : std::nullopt;
}

std::optional<Incoming> UdpLink::receiveUntil(SteadyClock::time_point deadline) {
    while (!isStopped_) {
        if (auto incoming = receiveReady()) return incoming;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - now());
        if (left.count() <= 0) return std::nullopt;
        pollfd ready[] = {
            {requests_.descriptor(),                 POLLIN, 0},
            {reports_ ? reports_->descriptor() : -1, POLLIN, 0},
            {stop_,                                  POLLIN, 0},
        };
        if (poll(ready, std::size(ready), static_cast<int>(left.count())) < 0 && errno != EINTR) {
            throw localError("cannot wait for a datagram", errno);
        }
        isStopped_ = ready[2].revents != 0;
    }
    return std::nullopt;
}

}  // namespace client
