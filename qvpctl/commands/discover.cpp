// qvpctl discover: asks every camera on the local networks who it is.
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>

#include "client/error.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/records.h"
#include "qvpctl/tool.h"

using client::Found;

static const char kExamples[] =
    "  qvpctl discover                           every camera on every network of this machine\n"
    "  qvpctl discover -i eth0 --expect 50       on one interface, until fifty have answered\n"
    "  qvpctl discover --wait 31                 also those in other subnets, which report every 30 seconds\n"
    "  qvpctl discover --json | jq -r .address   their addresses, for a script\n";

static const Column kColumns[] = {
    {"MAC",      "mac",      0},
    {"ADDRESS",  "address",  0},
    {"NAME",     "name",     0},
    {"PRODUCT",  "product",  0},
    {"FIRMWARE", "firmware", 0},
    {"WEB",      "url",      0},
    {"NOTE",     "problems", 0},
};

struct DiscoverOptions {
    uint32_t expected = 0;
    bool csv = false;
};

static std::string interfaceNames(const std::vector<client::Interface>& interfaces) {
    std::string names;
    for (const client::Interface& interface : interfaces) names += (names.empty() ? "" : ", ") + interface.name;
    return names;
}

static std::string summary(size_t count, const std::string& interfaces) {
    return std::to_string(count) + (count == 1 ? " camera on " : " cameras on ") + interfaces;
}

// The notes only where there is one to make.
static std::span<const Column> columnsFor(const std::vector<Found>& all) {
    const bool hasNotes = std::ranges::any_of(all, [](const Found& one) { return !problemsOf(one).empty(); });
    return std::span(kColumns).first(hasNotes ? std::size(kColumns) : std::size(kColumns) - 1);
}

static Record asRow(Record record) {
    std::string notes;
    for (const Record& problem : record["problems"]) notes += (notes.empty() ? "" : ", ") + problem.get<std::string>();
    record["problems"] = notes;
    return record;
}

static void printRows(const std::vector<Found>& all, const DiscoverOptions& options) {
    const auto output = options.csv ? csv(std::cout, kColumns) : sortedTable(std::cout, columnsFor(all), "address");
    for (const Found& one : all) output->add(asRow(recordOf(one)));
    output->finish();
}

static int discover(const DiscoverOptions& options, const CommonOptions& common) {
    const StopSignal stop;
    const std::vector<client::Interface> interfaces = chosenInterfaces(common);
    client::UdpLink link = linkWithReports(stop.descriptor());
    client::Finder finder(link, {interfaces, common.family, common.wait(), options.expected, nullptr}, say);
    const auto lines = common.json ? jsonLines(std::cout) : nullptr;
    finder.run([&](const Found& one) {
        if (lines) lines->add(recordOf(one));
    });
    const std::vector<Found> all = finder.all();
    if (!lines) printRows(all, options);
    const std::string names = interfaceNames(interfaces);
    if (all.empty()) throw client::Error(client::ErrorKind::NotFound, "no camera answered on " + names);
    if (isatty(STDERR_FILENO) != 0) std::cerr << summary(all.size(), names) << "\n";
    const bool isShort = all.size() < options.expected;
    if (isShort) say(std::to_string(options.expected) + " cameras were expected");
    if (isShort) return kNotFound;
    return kSuccess;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<DiscoverOptions>();
    addCount(app, "--expect", options->expected, "End as soon as this many have answered");
    addFlag(app, "--csv", options->csv, "Print a table that spreadsheets read");
    return [options, &common] { return discover(*options, common); };
}

const Subcommand kDiscover = {"discover", "Find the cameras on the local network.", kExamples, prepare};
