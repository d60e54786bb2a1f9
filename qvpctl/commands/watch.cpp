// qvpctl watch: shows the presence reports that cameras broadcast unasked.
#include <poll.h>

#include <cerrno>
#include <iostream>

#include "qvpctl/command.h"
#include "qvpctl/failure.h"
#include "qvpctl/options.h"
#include "qvpctl/presence.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/udp_socket.h"

static const char kExamples[] =
    "  qvpctl watch                     every report on every interface, until Ctrl-C\n"
    "  qvpctl watch -i eth0 --count 1   wait for the first one on eth0\n"
    "  qvpctl watch --json              one JSON object a line, for a script\n";

// Cameras report every 30 seconds, so a row cannot wait for the next to know how wide it must be.
static const Column kColumns[] = {
    {"TIME",     "time",     25},
    {"MAC",      "mac",      17},
    {"ADDRESS",  "address",  15},
    {"NAME",     "name",     16},
    {"PRODUCT",  "product",  16},
    {"FIRMWARE", "firmware", 0 },
};

struct WatchOptions {
    std::string interface;
    uint32_t count = 0;  // 0: no end
    bool json = false;
};

// False when the user wants to stop.
static bool waitForDatagram(const UdpSocket& socket, const StopSignal& stop) {
    pollfd ready[] = {
        {socket.descriptor(), POLLIN, 0},
        {stop.descriptor(),   POLLIN, 0}
    };
    if (poll(ready, 2, -1) < 0 && errno != EINTR) {
        throw systemFailure("cannot wait for a datagram", errno);
    }
    return ready[1].revents == 0;
}

static int watch(const WatchOptions& options) {
    const unsigned wanted = options.interface.empty() ? 0 : interfaceIndex(options.interface);
    const UdpSocket socket = UdpSocket::forBroadcasts(kPort);
    const StopSignal stop;
    const auto output = options.json ? jsonLines(std::cout) : liveTable(std::cout, kColumns);
    uint32_t seen = 0;
    while (waitForDatagram(socket, stop)) {
        const auto datagram = socket.receive();
        if (!datagram || (wanted != 0 && datagram->interfaceIndex != wanted)) {
            continue;
        }
        auto presence = decodePresence(datagram->bytes());
        if (!presence) {
            continue;
        }
        presence->interface = interfaceName(datagram->interfaceIndex);
        output->add(recordOf(*presence, time(nullptr)));
        if (++seen == options.count) {
            break;
        }
    }
    output->finish();
    return kSuccess;
}

static Work prepare(CLI::App& app) {
    const auto options = std::make_shared<WatchOptions>();
    addInterface(app, options->interface, "Show what comes in on this interface only");
    addCount(app, "-n,--count", options->count, "End after this many reports");
    addJson(app, options->json, "Print one JSON object a line");
    return [options] { return watch(*options); };
}

const Subcommand kWatch = {"watch", "Show cameras as they report themselves.", kExamples, prepare};
