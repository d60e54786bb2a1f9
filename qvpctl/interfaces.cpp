#include "qvpctl/interfaces.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "qvpctl/failure.h"
#include "qvpctl/text.h"

using AddressList = std::unique_ptr<ifaddrs, decltype(&freeifaddrs)>;

static AddressList addresses() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        throw systemFailure("cannot list the network interfaces", errno);
    }
    return AddressList(list, freeifaddrs);
}

static bool isIpv4(const ifaddrs& entry) { return entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == AF_INET; }

static Interface interfaceOf(const ifaddrs& entry) { return {entry.ifa_name, if_nametoindex(entry.ifa_name)}; }

static Failure interfaceFailure(const std::string& name, const char* reason) {
    return Failure(kSystemError, "interface " + printable(name) + ": " + reason);
}

std::vector<Interface> broadcastInterfaces() {
    std::vector<Interface> result;
    const AddressList list = addresses();
    for (const ifaddrs* entry = list.get(); entry != nullptr; entry = entry->ifa_next) {
        const unsigned wanted = IFF_UP | IFF_BROADCAST;
        if (!isIpv4(*entry) || (entry->ifa_flags & wanted) != wanted) {
            continue;
        }
        const Interface found = interfaceOf(*entry);
        const bool isKnown = std::any_of(result.begin(), result.end(),
                                         [&](const Interface& known) { return known.index == found.index; });
        if (!isKnown) {
            result.push_back(found);
        }
    }
    return result;
}

Interface interfaceNamed(const std::string& name) {
    interfaceIndex(name);
    bool isUp = false;
    const AddressList list = addresses();
    for (const ifaddrs* entry = list.get(); entry != nullptr; entry = entry->ifa_next) {
        if (name != entry->ifa_name) {
            continue;
        }
        isUp = (entry->ifa_flags & IFF_UP) != 0;
        if (isUp && isIpv4(*entry)) {
            return interfaceOf(*entry);
        }
    }
    throw interfaceFailure(name, isUp ? "it has no IPv4 address" : "it is down");
}

unsigned interfaceIndex(const std::string& name) {
    const unsigned index = if_nametoindex(name.c_str());
    if (index == 0) {
        throw interfaceFailure(name, "no such interface");
    }
    return index;
}

std::string interfaceName(unsigned index) {
    char name[IF_NAMESIZE];
    return if_indextoname(index, name) != nullptr ? name : "";
}
