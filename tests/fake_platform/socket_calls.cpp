#include "socket_calls.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "event_log.h"
#include "parts.h"
#include "scripted_network.h"

namespace fake {
namespace {

int g_socket = -1;

std::string hex(const void* data, std::size_t length) {
    static const char* const digits = "0123456789ABCDEF";
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::string text;
    for (std::size_t at = 0; at < length; ++at) {
        text += digits[bytes[at] >> 4];
        text += digits[bytes[at] & 15];
    }
    return text;
}

std::string shown(const sockaddr* address, socklen_t length) {
    sockaddr_in internet{};
    std::memcpy(&internet, address, std::min<std::size_t>(length, sizeof internet));
    std::string text = internet.sin_family == AF_INET ? "" : "other-family ";
    char dotted[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &internet.sin_addr, dotted, sizeof dotted);
    text += std::string(dotted) + ":" + std::to_string(ntohs(internet.sin_port));
    return length == 16 ? text : text + " address-length " + std::to_string(length);
}

std::string optionName(int option) {
    switch (option) {
        case SO_BINDTODEVICE:
            return "SO_BINDTODEVICE";
        case SO_BROADCAST:
            return "SO_BROADCAST";
        case SO_REUSEADDR:
            return "SO_REUSEADDR";
        default:
            return "option-" + std::to_string(option);
    }
}

std::string optionValue(const void* value, socklen_t length) {
    int number;
    if (length != sizeof number) return hex(value, length);
    std::memcpy(&number, value, sizeof number);
    return std::to_string(number);
}

void fillSender(const Arrival& arrival, sockaddr* sender, socklen_t* length) {
    sockaddr_in from{};
    from.sin_family = AF_INET;
    from.sin_port = htons(arrival.port);
    from.sin_addr.s_addr = htonl(0xC0A80064);
    std::memcpy(sender, &from, std::min<std::size_t>(*length, sizeof from));
    *length = sizeof from;
}

}  // namespace

int scriptedSocket() { return g_socket; }

void forgetSocket() { g_socket = -1; }

}  // namespace fake

using namespace fake;

extern "C" {

int __real_socket(int domain, int type, int protocol);
int __real_close(int descriptor);
int __real_setsockopt(int socket, int level, int option, const void* value, socklen_t length);
int __real_bind(int socket, const sockaddr* address, socklen_t length);
ssize_t __real_sendto(int socket, const void* data, size_t length, int flags, const sockaddr* to, socklen_t toLength);
ssize_t __real_recvfrom(int socket, void* data, size_t room, int flags, sockaddr* from, socklen_t* fromLength);

int __wrap_socket(int domain, int type, int protocol) {
    if (!networkIsScripted()) return callFails("socket") ? -1 : __real_socket(domain, type, protocol);
    const int kind = type & ~(SOCK_CLOEXEC | SOCK_NONBLOCK);
    appendEvent(std::string("socket ") + (domain == AF_INET ? "AF_INET" : "other-domain") +
                (kind == SOCK_DGRAM ? " SOCK_DGRAM" : " other-type") +
                (protocol == IPPROTO_UDP ? " IPPROTO_UDP" : " other-protocol") +
                ((type & SOCK_CLOEXEC) != 0 ? " close-on-exec" : ""));
    if (callFails("socket")) return -1;
    g_socket = __real_socket(domain, type, protocol);
    return g_socket;
}

int __wrap_close(int descriptor) {
    if (networkIsScripted() && descriptor >= 0 && descriptor == g_socket) {
        appendEvent("close socket");
        g_socket = -1;
    }
    return __real_close(descriptor);
}

int __wrap_setsockopt(int socket, int level, int option, const void* value, socklen_t length) {
    if (!networkIsScripted())
        return callFails("setsockopt") ? -1 : __real_setsockopt(socket, level, option, value, length);
    appendEvent(std::string("setsockopt ") + (level == SOL_SOCKET ? "SOL_SOCKET " : "other-level ") +
                optionName(option) + " " + std::to_string(length) + " " + optionValue(value, length));
    return callFails("setsockopt") ? -1 : 0;
}

int __wrap_bind(int socket, const sockaddr* address, socklen_t length) {
    if (!networkIsScripted()) return callFails("bind") ? -1 : __real_bind(socket, address, length);
    appendEvent("bind " + shown(address, length));
    return callFails("bind") ? -1 : 0;
}

ssize_t __wrap_sendto(int socket, const void* data, size_t length, int flags, const sockaddr* to, socklen_t toLength) {
    if (!networkIsScripted()) return __real_sendto(socket, data, length, flags, to, toLength);
    const auto signedLength = static_cast<ssize_t>(length);
    appendEvent("sendto " + shown(to, toLength) + " " + std::to_string(signedLength) +
                (signedLength > 0 ? " " + hex(data, length) : "") + (flags == 0 ? "" : " flags"));
    if (signedLength < 0) errno = EMSGSIZE;
    return signedLength < 0 || callFails("sendto") ? -1 : signedLength;
}

ssize_t __wrap_recvfrom(int socket, void* data, size_t room, int flags, sockaddr* from, socklen_t* fromLength) {
    if (!networkIsScripted()) return __real_recvfrom(socket, data, room, flags, from, fromLength);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const bool zeroed = std::all_of(bytes, bytes + room, [](std::uint8_t byte) { return byte == 0; });
    appendEvent("recvfrom " + std::to_string(room) + (zeroed ? "" : " dirty") + (flags == 0 ? "" : " flags") +
                (*fromLength == 16 ? "" : " address-length " + std::to_string(*fromLength)));
    const Arrival arrival = takeArrival();
    if (arrival.error != 0) {
        errno = arrival.error;
        return -1;
    }
    const std::size_t length = std::min(room, arrival.bytes.size());
    std::copy_n(arrival.bytes.begin(), length, static_cast<std::uint8_t*>(data));
    fillSender(arrival, from, fromLength);
    return static_cast<ssize_t>(length);
}

}  // extern "C"
