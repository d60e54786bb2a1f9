#include <net/route.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "platform.h"
#include "small_file.h"

static constexpr unsigned kUsable = RTF_UP | RTF_GATEWAY;

// Returns 0 and the gateway of the interface's default route with the lowest metric, first octet first, or -1 with the
// four bytes untouched. The kernel prints an address as the number that its four bytes are on this machine, which makes
// them right on either byte order.
int net_get_gateway(const char* interface, uint8_t address[4]) {
    static char routes[32 * 1024];
    bool found = false;
    int best = 0;
    if (interface == nullptr || readSmallFile("/proc/net/route", routes, sizeof routes) < 0) return -1;
    for (const char* line = strchr(routes, '\n'); line != nullptr; line = strchr(line + 1, '\n')) {
        char name[32];
        unsigned destination, gateway, flags, mask;
        int metric;
        const int fields =
            sscanf(line + 1, "%31s %x %x %x %*d %*d %d %x", name, &destination, &gateway, &flags, &metric, &mask);
        if (fields != 6 || strcmp(name, interface) != 0 || destination != 0 || mask != 0) continue;
        if ((flags & kUsable) != kUsable || (found && metric >= best)) continue;
        found = true;
        best = metric;
        const uint32_t bytes = gateway;
        memcpy(address, &bytes, 4);
    }
    return found ? 0 : -1;
}
