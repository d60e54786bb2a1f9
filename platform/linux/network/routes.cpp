#include <errno.h>
#include <fcntl.h>
#include <net/route.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#include "common/numbers.h"
#include "common/slice.h"
#include "network/network_files.h"
#include "platform.h"

struct Route {
    Slice interface;
    uint32_t destination, gateway, mask;  // addresses as they lie in memory, in network order
    uint32_t flags, metric;
};

// Cuts the next word off the line; empty at its end.
static Slice takeWord(Slice& line) {
    while (line.length > 0 && (*line.text == ' ' || *line.text == '\t')) line = {line.text + 1, line.length - 1};
    Slice word = {line.text, 0};
    while (word.length < line.length && word.text[word.length] != ' ' && word.text[word.length] != '\t') word.length++;
    line = {line.text + word.length, line.length - word.length};
    return word;
}

static bool takeNumber(Slice& line, unsigned base, uint32_t& number) {
    const Slice word = takeWord(line);
    number = 0;
    for (size_t i = 0; i < word.length; i++) {
        const int digit = hexDigit(word.text[i]);
        if (digit < 0 || static_cast<unsigned>(digit) >= base) return false;
        number = number * base + static_cast<uint32_t>(digit);
    }
    return word.length > 0;
}

// Interface, destination, gateway, flags, use counts (2), metric, mask, ...; the kernel prints an address as the
// hexadecimal number that its four bytes are on this machine, so the number has the right bytes on either byte order.
static bool takeRoute(Slice line, Route& route) {
    uint32_t unused = 0;
    route.interface = takeWord(line);
    return takeNumber(line, 16, route.destination) && takeNumber(line, 16, route.gateway) &&
           takeNumber(line, 16, route.flags) && takeNumber(line, 10, unused) && takeNumber(line, 10, unused) &&
           takeNumber(line, 10, route.metric) && takeNumber(line, 16, route.mask);
}

static bool isDefaultBy(const Route& route, const char* interface) {
    constexpr uint32_t kWanted = RTF_UP | RTF_GATEWAY;
    return sliceEquals(route.interface, interface) && route.destination == 0 && route.mask == 0 &&
           (route.flags & kWanted) == kWanted && (route.flags & RTF_REJECT) == 0;
}

// Of the routes in a table of lines.
static bool findGateway(Slice table, const char* interface, Route& best) {
    bool found = false;
    while (table.length > 0) {
        const char* newline = static_cast<const char*>(memchr(table.text, '\n', table.length));
        const Slice line = {table.text, newline != nullptr ? static_cast<size_t>(newline - table.text) : table.length};
        const size_t taken = newline != nullptr ? line.length + 1 : line.length;
        table = {table.text + taken, table.length - taken};
        Route route;
        if (!takeRoute(line, route) || !isDefaultBy(route, interface)) continue;
        if (found && route.metric >= best.metric) continue;
        best = route;
        found = true;
    }
    return found;
}

// The kernel hands out whole lines of 128 bytes, as many as a page holds: what leaves room for another is the end.
static ssize_t readTable(int descriptor, char* table, size_t capacity) {
    constexpr size_t kAlmostAPage = 4096 - 2 * 128;
    size_t length = 0;
    while (length < capacity) {
        const ssize_t count = pread(descriptor, table + length, capacity - length, static_cast<off_t>(length));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return -1;
        length += static_cast<size_t>(count);
        if (static_cast<size_t>(count) < kAlmostAPage) break;
    }
    return static_cast<ssize_t>(length);
}

static int gatewayFrom(int descriptor, const char* interface, uint8_t address[4]) {
    static char table[16384];
    if (interface == nullptr || address == nullptr) return -1;
    const ssize_t length = readTable(descriptor, table, sizeof table);
    Route best = {};
    if (length < 0 || !findGateway({table, static_cast<size_t>(length)}, interface, best)) return -1;
    memcpy(address, &best.gateway, sizeof best.gateway);
    return 0;
}

int gatewayFromRoutes(const char* path, const char* interface, uint8_t address[4]) {
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return -1;
    const int result = gatewayFrom(descriptor, interface, address);
    close(descriptor);
    return result;
}

// The table stays open: the kernel makes it anew for every read from its start.
int net_get_gateway(const char* interface, uint8_t address[4]) {
    static int descriptor = -1;
    if (descriptor < 0) descriptor = open("/proc/net/route", O_RDONLY | O_CLOEXEC);
    return gatewayFrom(descriptor, interface, address);
}
