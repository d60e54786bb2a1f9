#include "client/interfaces.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "client/error.h"
#include "client/text.h"

namespace client {

using AddressList = std::unique_ptr<ifaddrs, decltype(&freeifaddrs)>;

static AddressList addresses() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) throw localError("cannot list the network interfaces", errno);
    return AddressList(list, freeifaddrs);
}

static bool isIpv4(const ifaddrs& entry) { return entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == AF_INET; }

static Ipv4 addressOf(const sockaddr* address) {
    Ipv4 result{};
    if (address == nullptr) return result;
    sockaddr_in internet;
    memcpy(&internet, address, sizeof internet);
    memcpy(result.bytes, &internet.sin_addr, sizeof result.bytes);
    return result;
}

static Error interfaceError(const std::string& name, const char* reason) {
    return Error(ErrorKind::Local, "interface " + name + ": " + reason);
}

// Those that have all these flags, each once, with every subnet it has.
static std::vector<Interface> interfacesWith(unsigned flags) {
    std::vector<Interface> result;
    const AddressList list = addresses();
    for (const ifaddrs* entry = list.get(); entry != nullptr; entry = entry->ifa_next) {
        if (!isIpv4(*entry) || (entry->ifa_flags & flags) != flags) continue;
        // A label such as "eth0:1" is an address of eth0.
        const std::string name = std::string(entry->ifa_name).substr(0, std::string(entry->ifa_name).find(':'));
        auto known = std::ranges::find(result, name, &Interface::name);
        if (known == result.end()) known = result.insert(known, Interface{name, if_nametoindex(name.c_str()), {}});
        known->subnets.push_back({addressOf(entry->ifa_addr), addressOf(entry->ifa_netmask)});
    }
    return result;
}

std::vector<Interface> broadcastInterfaces() { return interfacesWith(IFF_UP | IFF_BROADCAST); }

static bool isUp(const std::string& name) {
    const AddressList list = addresses();
    for (const ifaddrs* entry = list.get(); entry != nullptr; entry = entry->ifa_next) {
        if (name == entry->ifa_name && (entry->ifa_flags & IFF_UP) != 0) return true;
    }
    return false;
}

Interface interfaceNamed(const std::string& name) {
    interfaceIndex(name);
    const std::vector<Interface> up = interfacesWith(IFF_UP);
    const auto found = std::ranges::find(up, name, &Interface::name);
    if (found != up.end()) return *found;
    throw interfaceError(name, isUp(name) ? "it has no IPv4 address" : "it is down");
}

unsigned interfaceIndex(const std::string& name) {
    const unsigned index = if_nametoindex(name.c_str());
    if (index == 0) throw interfaceError(name, "no such interface");
    return index;
}

std::string interfaceName(unsigned index) {
    char name[IF_NAMESIZE];
    return if_indextoname(index, name) != nullptr ? name : "";
}

bool isNear(const Interface& interface, Ipv4 address) {
    return isSet(address) && std::ranges::any_of(interface.subnets, [&](const Subnet& subnet) {
               return isSameNetwork(subnet.address, address, subnet.mask);
           });
}

}  // namespace client
