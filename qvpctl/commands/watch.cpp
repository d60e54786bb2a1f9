// qvpctl watch: shows the presence reports that cameras broadcast unasked.
#include <iostream>
#include <memory>
#include <optional>

#include "client/presence.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/metrics/metrics_file.h"
#include "qvpctl/records.h"
#include "qvpctl/tool.h"

static const char kExamples[] =
    "  qvpctl watch                     every report on every interface, until Ctrl-C\n"
    "  qvpctl watch -i eth0 --count 1   wait for the first one on eth0\n"
    "  qvpctl watch --json              one JSON object a line, for a script\n"
    "  qvpctl watch --metrics /var/lib/prometheus/node-exporter/qvp.prom >/dev/null\n"
    "                                   metrics for Prometheus, and nothing else\n";

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
    uint32_t count = 0;   // 0: no end
    std::string metrics;  // a file; empty: none
};

static int watch(const WatchOptions& options, const CommonOptions& common) {
    const unsigned wanted = common.interface.empty() ? 0 : client::interfaceIndex(common.interface);
    const StopSignal stop;
    client::UdpLink link(client::UdpLink::Hears::RepliesAndReports, stop.descriptor());
    std::optional<MetricsFile> metrics;
    if (!options.metrics.empty()) metrics.emplace(options.metrics, link.now());
    const auto output = common.json ? jsonLines(std::cout) : liveTable(std::cout, kColumns, outputLooks());
    uint32_t seen = 0;
    while (!link.isStopped() && (options.count == 0 || seen < options.count)) {
        if (metrics) metrics->keepUp(link.now());
        const auto incoming = link.receiveUntil(metrics ? metrics->due() : link.now() + std::chrono::hours(1));
        if (!incoming || (wanted != 0 && incoming->interfaceIndex != wanted)) continue;
        const auto presence = client::decodePresence(incoming->bytes);
        if (!presence) continue;
        const time_t arrival = time(nullptr);
        output->add(recordOf(*presence, client::interfaceName(incoming->interfaceIndex), arrival));
        if (metrics) metrics->add(*presence, incoming->interfaceIndex, arrival);
        seen++;
    }
    output->finish();
    return kSuccess;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<WatchOptions>();
    addCount(app, "-n,--count", options->count, "End after this many reports");
    addFile(app, "--metrics", options->metrics, "Keep metrics for Prometheus in this file as long as the command runs");
    return [options, &common] { return watch(*options, common); };
}

const Subcommand kWatch = {"watch", "Show cameras as they report themselves.", kExamples, prepare,
                           Traffic::OnlyListens};
