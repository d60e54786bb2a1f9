// qvpctl discover: asks every camera on the local networks who it is.
#include <cmath>
#include <iostream>

#include "qvpctl/command.h"
#include "qvpctl/failure.h"
#include "qvpctl/options.h"
#include "qvpctl/search.h"

static const char kExamples[] =
    "  qvpctl discover                           every camera on every network of this machine\n"
    "  qvpctl discover -i eth0                   on one interface only\n"
    "  qvpctl discover --wait 5                  on a slow network\n"
    "  qvpctl discover --json | jq -r .address   their addresses, for a script\n";

static const Column kColumns[] = {
    {"MAC",      "mac",      0},
    {"ADDRESS",  "address",  0},
    {"NAME",     "name",     0},
    {"PRODUCT",  "product",  0},
    {"FIRMWARE", "firmware", 0},
    {"WEB",      "url",      0},
};

struct DiscoverOptions {
    std::string interface;
    double waitSeconds = 2;
    bool json = false;
};

static int discover(const DiscoverOptions& options) {
    const auto output = options.json ? jsonLines(std::cout) : sortedTable(std::cout, kColumns, "address");
    const Search search = {options.interface, std::chrono::milliseconds(llround(options.waitSeconds * 1000))};
    const size_t count = searchCameras(search, [&](const Camera& camera) { output->add(recordOf(camera)); });
    output->finish();
    if (count == 0) {
        std::cerr << "qvpctl: no camera answered\n";
        return kNoCamera;
    }
    return kSuccess;
}

static Work prepare(CLI::App& app) {
    const auto options = std::make_shared<DiscoverOptions>();
    addInterface(app, options->interface, "Ask on this interface only, loopback too if named");
    addSeconds(app, "-w,--wait", options->waitSeconds, "How long to take replies (default 2)");
    addJson(app, options->json, "Print one JSON object a line, as the replies come in");
    return [options] { return discover(*options); };
}

const Subcommand kDiscover = {"discover", "Find the cameras on the local network.", kExamples, prepare};
