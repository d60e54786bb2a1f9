#include "qvpctl/search.h"

#include <iostream>
#include <set>

#include "protocol/opcodes.h"
#include "qvpctl/failure.h"
#include "qvpctl/request.h"
#include "qvpctl/text.h"
#include "qvpctl/udp_socket.h"

// A broadcast is sent once, without acknowledgement, and many links lose some of them.
constexpr int kRequests = 3;

static std::vector<Interface> searchedInterfaces(const std::string& name) {
    if (!name.empty()) {
        return {interfaceNamed(name)};
    }
    std::vector<Interface> result = broadcastInterfaces();
    if (result.empty()) {
        throw Failure(kSystemError, "no interface is up with broadcast and an IPv4 address");
    }
    return result;
}

static Failure sendFailure(const Interface& interface, int error) {
    return systemFailure("interface " + printable(interface.name) + ": cannot send", error);
}

// One interface that cannot send does not stop the search on the others; when none can, nothing is left to wait for.
static void sendFirst(const UdpSocket& socket, const std::vector<Interface>& interfaces, const PacketHeader& request) {
    size_t failures = 0;
    for (const Interface& interface : interfaces) {
        const int error = socket.broadcast(interface, kPort, bytesOf(request));
        if (error == 0) {
            continue;
        }
        if (++failures == interfaces.size()) {
            throw sendFailure(interface, error);
        }
        std::cerr << "qvpctl: " << sendFailure(interface, error).what() << "\n";
    }
}

static void sendAgain(const UdpSocket& socket, const std::vector<Interface>& interfaces, const PacketHeader& request) {
    for (const Interface& interface : interfaces) {
        (void)socket.broadcast(interface, kPort, bytesOf(request));
    }
}

size_t searchCameras(const Search& search, const std::function<void(const Camera&)>& found) {
    const std::vector<Interface> interfaces = searchedInterfaces(search.interface);
    const UdpSocket socket = UdpSocket::forRequests();
    const PacketHeader request = requestToAll(kPrimaryProtocol, opcode::kDiscovery, randomSequence());
    const auto start = std::chrono::steady_clock::now();
    std::set<std::string> known;
    sendFirst(socket, interfaces, request);
    for (int turn = 1; turn <= kRequests; turn++) {
        while (const auto datagram = socket.receiveUntil(start + search.wait * turn / kRequests)) {
            auto camera =
                answers(datagram->bytes(), request) ? decodeCamera(kPrimaryProtocol, datagram->bytes()) : std::nullopt;
            if (camera && known.insert(macText(camera->mac)).second) {
                camera->interface = interfaceName(datagram->interfaceIndex);
                found(*camera);
            }
        }
        if (turn < kRequests) {
            sendAgain(socket, interfaces, request);
        }
    }
    return known.size();
}
