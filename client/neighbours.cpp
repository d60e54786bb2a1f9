#include "client/neighbours.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "client/text.h"
#include "client/udp_socket.h"

namespace client {

static constexpr uint16_t kDiscardPort = 9;

// A row of /proc/net/arp: address, hardware type, flags, MAC, mask, device. An entry without an answer has no flags.
static bool takeRow(const std::string& row, Ipv4& address, Mac& mac) {
    std::istringstream words(row);
    std::string addressWord, type, flags, macWord;
    words >> addressWord >> type >> flags >> macWord;
    const auto parsedAddress = parseAddress(addressWord);
    const auto parsedMac = parseMac(macWord);
    if (!parsedAddress || !parsedMac || flags == "0x0") return false;
    address = *parsedAddress;
    mac = *parsedMac;
    return std::ranges::any_of(mac.bytes, [](uint8_t byte) { return byte != 0; });
}

static std::vector<std::pair<Ipv4, Mac>> known(const std::vector<Ipv4>& addresses) {
    std::vector<std::pair<Ipv4, Mac>> result;
    std::ifstream table("/proc/net/arp");
    for (std::string row; std::getline(table, row);) {
        Ipv4 address{};
        Mac mac{};
        if (!takeRow(row, address, mac)) continue;
        const auto isIt = [&](Ipv4 one) { return isSame(one, address); };
        if (std::ranges::any_of(addresses, isIt)) result.emplace_back(address, mac);
    }
    return result;
}

// One that cannot be sent to has nobody there.
std::vector<std::pair<Ipv4, Mac>> answeringHosts(const std::vector<Ipv4>& addresses, std::chrono::milliseconds wait) {
    if (addresses.empty()) return {};
    const UdpSocket socket = UdpSocket::forRequests();
    const uint8_t nothing[1] = {0};
    for (const Ipv4 address : addresses) static_cast<void>(socket.send(address, kDiscardPort, nothing));
    std::this_thread::sleep_for(wait);
    return known(addresses);
}

}  // namespace client
