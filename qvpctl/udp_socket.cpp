#include "qvpctl/udp_socket.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "qvpctl/failure.h"

// Room for one in_pktinfo beside a datagram.
union PacketInfoBuffer {
    cmsghdr alignment;
    char bytes[CMSG_SPACE(sizeof(in_pktinfo))];
};

static sockaddr_in socketAddress(uint32_t address, uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    result.sin_addr.s_addr = htonl(address);
    return result;
}

UdpSocket::UdpSocket() : descriptor_(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    if (descriptor_ < 0) {
        throw systemFailure("cannot open a socket", errno);
    }
    enable(IPPROTO_IP, IP_PKTINFO);
}

UdpSocket::UdpSocket(UdpSocket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

UdpSocket::~UdpSocket() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

UdpSocket UdpSocket::forRequests() {
    UdpSocket result;
    result.enable(SOL_SOCKET, SO_BROADCAST);
    result.bindTo(INADDR_ANY, 0);
    return result;
}

UdpSocket UdpSocket::forBroadcasts(uint16_t port) {
    UdpSocket result;
    result.enable(SOL_SOCKET, SO_REUSEADDR);
    result.bindTo(INADDR_BROADCAST, port);
    return result;
}

void UdpSocket::enable(int level, int option) const {
    const int on = 1;
    if (setsockopt(descriptor_, level, option, &on, sizeof on) != 0) {
        throw systemFailure("cannot set up a socket", errno);
    }
}

void UdpSocket::bindTo(uint32_t address, uint16_t port) const {
    const sockaddr_in target = socketAddress(address, port);
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&target), sizeof target) != 0) {
        throw systemFailure("cannot take UDP port " + std::to_string(port), errno);
    }
}

int UdpSocket::broadcast(const Interface& interface, uint16_t port, std::span<const uint8_t> bytes) const {
    sockaddr_in target = socketAddress(INADDR_BROADCAST, port);
    iovec data{const_cast<uint8_t*>(bytes.data()), bytes.size()};
    PacketInfoBuffer control{};
    msghdr message{};
    message.msg_name = &target;
    message.msg_namelen = sizeof target;
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = &control;
    message.msg_controllen = sizeof control;

    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = IPPROTO_IP;
    header->cmsg_type = IP_PKTINFO;
    header->cmsg_len = CMSG_LEN(sizeof(in_pktinfo));
    in_pktinfo origin{};
    origin.ipi_ifindex = static_cast<int>(interface.index);
    memcpy(CMSG_DATA(header), &origin, sizeof origin);
    return sendmsg(descriptor_, &message, 0) < 0 ? errno : 0;
}

static unsigned arrivalInterface(msghdr& message) {
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level == IPPROTO_IP && header->cmsg_type == IP_PKTINFO) {
            in_pktinfo info;
            memcpy(&info, CMSG_DATA(header), sizeof info);
            return static_cast<unsigned>(info.ipi_ifindex);
        }
    }
    return 0;
}

std::optional<Datagram> UdpSocket::receive() const {
    std::optional<Datagram> result(std::in_place);
    iovec data{result->buffer.data(), result->buffer.size()};
    PacketInfoBuffer control{};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = &control;
    message.msg_controllen = sizeof control;
    const ssize_t length = recvmsg(descriptor_, &message, 0);
    if (length < 0) {
        if (errno == EAGAIN || errno == EINTR) {
            return std::nullopt;
        }
        throw systemFailure("cannot receive", errno);
    }
    result->length = static_cast<size_t>(length);
    result->interfaceIndex = arrivalInterface(message);
    return result;
}

std::optional<Datagram> UdpSocket::receiveUntil(std::chrono::steady_clock::time_point deadline) const {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return std::nullopt;
        }
        pollfd ready{descriptor_, POLLIN, 0};
        if (poll(&ready, 1, static_cast<int>(left.count())) < 0 && errno != EINTR) {
            throw systemFailure("cannot wait for a datagram", errno);
        }
        if (auto datagram = receive()) {
            return datagram;
        }
    }
}
