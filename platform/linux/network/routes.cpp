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

// A metric beyond the signed numbers is printed as a negative one.
static bool takeNumber(Slice& line, unsigned base, uint32_t& number) {
    Slice word = takeWord(line);
    const bool isNegative = word.length > 1 && *word.text == '-';
    if (isNegative) word = {word.text + 1, word.length - 1};
    number = 0;
    for (size_t i = 0; i < word.length; i++) {
        const int digit = hexDigit(word.text[i]);
        if (digit < 0 || static_cast<unsigned>(digit) >= base) return false;
        number = number * base + static_cast<uint32_t>(digit);
    }
    if (isNegative) number = 0u - number;
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

// The best of those seen so far, if any.
struct Choice {
    bool found;
    Route route;
};

// Looks at the table's whole lines. Returns how many bytes they have.
static size_t chooseAmong(Slice table, const char* interface, Choice& best) {
    size_t taken = 0;
    while (taken < table.length) {
        const char* start = table.text + taken;
        const char* newline = static_cast<const char*>(memchr(start, '\n', table.length - taken));
        if (newline == nullptr) break;
        const size_t length = static_cast<size_t>(newline - start);
        taken += length + 1;
        Route route;
        if (!takeRoute({start, length}, route) || !isDefaultBy(route, interface)) continue;
        if (!best.found || route.metric < best.route.metric) best = {true, route};
    }
    return taken;
}

static ssize_t readAt(int descriptor, off_t position, char* bytes, size_t capacity) {
    ssize_t count;
    do {
        count = pread(descriptor, bytes, capacity, position);
    } while (count < 0 && errno == EINTR);
    return count;
}

// The kernel hands out whole lines of 128 bytes, as many as a page holds: a piece that leaves room for another is the
// last one.
static bool findGateway(int descriptor, const char* interface, Choice& best) {
    constexpr size_t kAlmostAPage = 4096 - 2 * 128;
    char piece[4096];
    off_t position = 0;
    for (;;) {
        const ssize_t count = readAt(descriptor, position, piece, sizeof piece);
        if (count < 0) return false;
        const size_t taken = chooseAmong({piece, static_cast<size_t>(count)}, interface, best);
        position += static_cast<off_t>(taken);
        if (taken == 0 || static_cast<size_t>(count) < kAlmostAPage) return best.found;
    }
}

static int gatewayFrom(int descriptor, const char* interface, uint8_t address[4]) {
    Choice best = {};
    if (interface == nullptr || address == nullptr || !findGateway(descriptor, interface, best)) return -1;
    memcpy(address, &best.route.gateway, sizeof best.route.gateway);
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
