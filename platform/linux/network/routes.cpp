#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <net/route.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#include "common/numbers.h"
#include "common/slice.h"
#include "network/network_files.h"
#include "platform.h"

struct Route {
    uint32_t gateway;  // as it lies in memory, in network order
    uint32_t flags, metric;
};

// What reads a line stops at the newline that ends it.
static bool isBlank(char letter) { return letter == ' ' || letter == '\t'; }

static Slice takeWord(const char*& line) {
    while (isBlank(*line)) line++;
    const char* const start = line;
    while (!isBlank(*line) && *line != '\n') line++;
    return {start, static_cast<size_t>(line - start)};
}

// A metric beyond the signed numbers is printed as a negative one.
template <unsigned Base>
static bool takeNumber(const char*& line, uint32_t& number) {
    while (isBlank(*line)) line++;
    const bool isNegative = *line == '-';
    if (isNegative) line++;
    const char* const start = line;
    number = 0;
    for (unsigned digit; (digit = static_cast<unsigned>(hexDigit(*line))) < Base; line++) {
        number = number * Base + digit;
    }
    if (isNegative) number = 0u - number;
    return line > start && (isBlank(*line) || *line == '\n');
}

static bool takeZero(const char*& line) {
    while (isBlank(*line)) line++;
    const char* const start = line;
    while (*line == '0') line++;
    return line > start && (isBlank(*line) || *line == '\n');
}

// Behind the interface: destination, gateway, flags, use counts (2), metric, mask, ...; the kernel prints an address as
// the hexadecimal number that its four bytes are on this machine, so the number has the right bytes on either byte
// order. Most routes lead to some network of their own, and are done with behind that.
static bool takeRouteToAll(const char* line, Route& route) {
    uint32_t unused = 0;
    return takeZero(line) && takeNumber<16>(line, route.gateway) && takeNumber<16>(line, route.flags) &&
           takeNumber<10>(line, unused) && takeNumber<10>(line, unused) && takeNumber<10>(line, route.metric) &&
           takeZero(line);
}

static bool isDefault(const Route& route) {
    constexpr uint32_t kWanted = RTF_UP | RTF_GATEWAY;
    return (route.flags & kWanted) == kWanted && (route.flags & RTF_REJECT) == 0;
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
        const char* line = table.text + taken;
        const char* newline = static_cast<const char*>(memchr(line, '\n', table.length - taken));
        if (newline == nullptr) break;
        taken += static_cast<size_t>(newline - line) + 1;
        Route route;
        if (!sliceEquals(takeWord(line), interface) || !takeRouteToAll(line, route) || !isDefault(route)) continue;
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
constexpr size_t kPiece = 4096;
constexpr size_t kAlmostAPiece = kPiece - 2 * 128;

// A table of one piece, and what was found in it. Mostly the next one has the same bytes.
static struct {
    char interface[IFNAMSIZ];
    char bytes[kAlmostAPiece];
    size_t length;
    Choice best;
} known;

static bool isKnown(Slice table, const char* interface) {
    return known.length == table.length && memcmp(known.bytes, table.text, table.length) == 0 &&
           strcmp(known.interface, interface) == 0;
}

static Choice chooseFromWhole(Slice table, const char* interface) {
    if (isKnown(table, interface)) return known.best;
    Choice best = {};
    chooseAmong(table, interface, best);
    const size_t length = strlen(interface);
    if (length >= sizeof known.interface) return best;
    memcpy(known.interface, interface, length + 1);
    memcpy(known.bytes, table.text, table.length);
    known.length = table.length;
    known.best = best;
    return best;
}

static Choice chooseGateway(int descriptor, const char* interface) {
    char piece[kPiece];
    Choice best = {};
    off_t position = 0;
    for (;;) {
        const ssize_t count = readAt(descriptor, position, piece, sizeof piece);
        if (count < 0) return {};
        const Slice table = {piece, static_cast<size_t>(count)};
        const bool isLast = table.length < kAlmostAPiece;
        if (isLast && position == 0) return chooseFromWhole(table, interface);
        const size_t taken = chooseAmong(table, interface, best);
        position += static_cast<off_t>(taken);
        if (taken == 0 || isLast) return best;
    }
}

static int gatewayFrom(int descriptor, const char* interface, uint8_t address[4]) {
    if (interface == nullptr || address == nullptr) return -1;
    const Choice best = chooseGateway(descriptor, interface);
    if (!best.found) return -1;
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
