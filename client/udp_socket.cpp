#include "client/udp_socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "client/error.h"

namespace client {

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

// Descriptors 0 to 2 belong to input and output, also where the caller has closed them.
static int openSocket() {
    const int opened = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (opened < 0 || opened > STDERR_FILENO) return opened;
    const int moved = fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(opened);
    return moved;
}

UdpSocket::UdpSocket() : descriptor_(openSocket()) {
    if (descriptor_ < 0) throw localError("cannot open a socket", errno);
    enable(IPPROTO_IP, IP_PKTINFO);
    growReceiveBuffer();
}

UdpSocket::UdpSocket(UdpSocket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

UdpSocket::~UdpSocket() {
    if (descriptor_ >= 0) close(descriptor_);
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
    if (setsockopt(descriptor_, level, option, &on, sizeof on) != 0) throw localError("cannot set up a socket", errno);
}

// Hundreds of cameras answer a broadcast at once. As much as the system allows is enough or all there is.
void UdpSocket::growReceiveBuffer() const {
    const int bytes = 4 * 1024 * 1024;
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

void UdpSocket::bindTo(uint32_t address, uint16_t port) const {
    const sockaddr_in target = socketAddress(address, port);
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&target), sizeof target) != 0) {
        throw localError("cannot take UDP port " + std::to_string(port), errno);
    }
}

int UdpSocket::send(Ipv4 address, uint16_t port, std::span<const uint8_t> bytes) const {
    sockaddr_in target = socketAddress(0, port);
    memcpy(&target.sin_addr, address.bytes, sizeof address.bytes);
    const ssize_t sent = sendto(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL,
                                reinterpret_cast<const sockaddr*>(&target), sizeof target);
    return sent < 0 ? errno : 0;
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

std::optional<Incoming> UdpSocket::receive() const {
    std::vector<uint8_t> bytes(kDatagramSize + 1);
    iovec data{bytes.data(), bytes.size()};
    sockaddr_in sender{};
    PacketInfoBuffer control{};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = &control;
    message.msg_controllen = sizeof control;
    const ssize_t length = recvmsg(descriptor_, &message, 0);
    // What the network said of an earlier datagram (refused, unreachable) is no reason to end.
    if (length < 0 && (errno == EAGAIN || errno == EINTR || errno == ECONNREFUSED)) return std::nullopt;
    if (length < 0) throw localError("cannot receive", errno);
    bytes.resize(static_cast<size_t>(length));
    Incoming incoming{std::move(bytes), {}, arrivalInterface(message)};
    memcpy(incoming.sender.bytes, &sender.sin_addr, sizeof incoming.sender.bytes);
    return incoming;
}

}  // namespace client
