#include <net/route.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "common/small_file.h"
#include "network/network_files.h"
#include "platform.h"

struct Route {
    char interface[16];
    uint32_t destination, gateway, mask;  // addresses as they lie in memory, in network order
    unsigned flags, metric;
};

// Interface, destination, gateway, flags, use counts (2), metric, mask, ...; the kernel prints an address as the
// hexadecimal number that its four bytes are on this machine, so the number has the right bytes on either byte order.
static bool readRoute(const char* line, Route& route) {
    return sscanf(line, "%15s %x %x %x %*s %*s %u %x", route.interface, &route.destination, &route.gateway,
                  &route.flags, &route.metric, &route.mask) == 6;
}

static bool isDefaultBy(const Route& route, const char* interface) {
    constexpr unsigned kWanted = RTF_UP | RTF_GATEWAY;
    return strcmp(route.interface, interface) == 0 && route.destination == 0 && route.mask == 0 &&
           (route.flags & kWanted) == kWanted && (route.flags & RTF_REJECT) == 0;
}

int gatewayFromRoutes(const char* path, const char* interface, uint8_t address[4]) {
    static char table[16384];
    if (interface == nullptr || address == nullptr || readSmallFile(path, table, sizeof table) < 0) return -1;
    Route best = {};
    bool found = false;
    char* rest = nullptr;
    for (char* line = strtok_r(table, "\n", &rest); line != nullptr; line = strtok_r(nullptr, "\n", &rest)) {
        Route route;
        if (!readRoute(line, route) || !isDefaultBy(route, interface)) continue;
        if (found && route.metric >= best.metric) continue;
        best = route;
        found = true;
    }
    if (!found) return -1;
    memcpy(address, &best.gateway, sizeof best.gateway);
    return 0;
}

int net_get_gateway(const char* interface, uint8_t address[4]) {
    return gatewayFromRoutes("/proc/net/route", interface, address);
}
