// qvpctl discover: asks every camera on the local networks who it is.
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>

#include "client/error.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/known_cameras.h"
#include "qvpctl/records.h"
#include "qvpctl/tool.h"

using client::Found;

static const char kExamples[] =
    "  qvpctl discover                           every camera on every network of this machine\n"
    "  qvpctl discover -i eth0 --expect 50       on one interface, until fifty have answered\n"
    "  qvpctl discover --wait 31                 also those in other subnets, which report every 30 seconds\n"
    "  qvpctl discover --columns name,address,gateway --sort name\n"
    "  qvpctl discover --json | jq -r .address   their addresses, for a script\n";

// Every column there is.
static const Column kColumns[] = {
    {"MAC",             "mac",            0, Look::Plain  },
    {"ADDRESS",         "address",        0, Look::Plain  },
    {"NAME",            "name",           0, Look::Plain  },
    {"BRAND",           "brand",          0, Look::Plain  },
    {"PRODUCT",         "product",        0, Look::Plain  },
    {"MODEL",           "model",          0, Look::Plain  },
    {"FIRMWARE",        "firmware",       0, Look::Plain  },
    {"HARDWARE",        "hardware",       0, Look::Plain  },
    {"PORT",            "httpPort",       0, Look::Plain  },
    {"NETMASK",         "netmask",        0, Look::Plain  },
    {"GATEWAY",         "gateway",        0, Look::Plain  },
    {"DNS",             "dns",            0, Look::Plain  },
    {"DHCP",            "dhcp",           0, Look::Plain  },
    {"LOCAL TIME",      "localTime",      0, Look::Plain  },
    {"TIME ZONE",       "timezone",       0, Look::Plain  },
    {"DAYLIGHT SAVING", "daylightSaving", 0, Look::Plain  },
    {"WEB",             "url",            0, Look::Link   },
    {"INTERFACE",       "interface",      0, Look::Plain  },
    {"ANSWERED",        "answered",       0, Look::Plain  },
    {"NOTE",            "problems",       0, Look::Warning},
};

static const std::vector<std::string> kUsual = {"mac", "address", "name", "product", "firmware", "url"};

static std::vector<std::string> columnNames() {
    std::vector<std::string> names;
    for (const Column& column : kColumns) names.emplace_back(column.key);
    return names;
}

struct DiscoverOptions {
    uint32_t expected = 0;
    bool csv = false;
    std::vector<std::string> columns;  // empty: the usual ones, and the notes where there is one to make
    std::string order = "address";
};

static std::string interfaceNames(const std::vector<client::Interface>& interfaces) {
    std::string names;
    for (const client::Interface& interface : interfaces) names += (names.empty() ? "" : ", ") + interface.name;
    return names;
}

static std::string summary(size_t count, const std::string& interfaces) {
    return std::to_string(count) + (count == 1 ? " camera on " : " cameras on ") + interfaces;
}

static std::vector<Column> chosenColumns(const DiscoverOptions& options, const std::vector<Record>& records) {
    std::vector<std::string> names = options.columns;
    if (names.empty()) {
        names = kUsual;
        const bool hasNotes = std::ranges::any_of(records, [](const Record& one) { return !one["problems"].empty(); });
        if (hasNotes || options.csv) names.emplace_back("problems");
    }
    std::vector<Column> columns;
    std::ranges::transform(names, std::back_inserter(columns),
                           [](const std::string& name) { return *std::ranges::find(kColumns, name, &Column::key); });
    return columns;
}

// A list is one text in a cell.
static Record asRow(Record record) {
    for (Record& value : record) {
        if (!value.is_array()) continue;
        std::string text;
        for (const Record& one : value) text += (text.empty() ? "" : ", ") + one.get<std::string>();
        value = text;
    }
    return record;
}

static void printRows(const std::vector<Record>& records, const DiscoverOptions& options) {
    const std::vector<Column> columns = chosenColumns(options, records);
    const auto output = options.csv ? csv(std::cout, columns) : table(std::cout, columns, outputLooks());
    for (const Record& record : records) output->add(asRow(record));
    output->finish();
}

static void print(const std::vector<Found>& all, const DiscoverOptions& options, bool json) {
    std::vector<Record> records;
    std::ranges::transform(all, std::back_inserter(records), [](const Found& one) { return recordOf(one); });
    sortBy(records, options.order);
    if (!json) return printRows(records, options);
    const auto lines = jsonLines(std::cout);
    for (const Record& record : records) lines->add(record);
}

static void refuseContradictions(const DiscoverOptions& options, bool json) {
    if (!json || (!options.csv && options.columns.empty())) return;
    throw client::Error(client::ErrorKind::BadValue,
                        "--json holds every field; it goes with neither --csv nor --columns");
}

static std::string hint(const CommonOptions& common) {
    const bool hasHeardAll = common.waitSeconds >= 31;
    return hasHeardAll ? "" : "; one of another subnet reports every 30 s, which --wait 31 hears";
}

static int discover(const DiscoverOptions& options, const CommonOptions& common) {
    refuseContradictions(options, common.json);
    const StopSignal stop;
    const std::vector<client::Interface> interfaces = chosenInterfaces(common);
    client::UdpLink link = linkWithReports(stop.descriptor());
    client::Search search{interfaces, common.family, common.wait(), options.expected};
    search.rounds = static_cast<int>(common.retries) + 1;
    client::Finder finder(link, search, say);
    finder.run([](const Found&) {});
    const std::vector<Found> all = finder.all();
    print(all, options, common.json);
    rememberCameras(all);
    const std::string names = interfaceNames(interfaces);
    if (all.empty()) throw client::Error(client::ErrorKind::NotFound, "no camera answered on " + names + hint(common));
    if (isatty(STDERR_FILENO) != 0 && !common.json) std::cerr << summary(all.size(), names) << "\n";
    const bool isShort = all.size() < options.expected;
    if (isShort) say(std::to_string(options.expected) + " cameras were expected");
    if (isShort) return kNotFound;
    return kSuccess;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<DiscoverOptions>();
    addCount(app, "--expect", options->expected, "End as soon as this many were found");
    addFlag(app, "--csv", options->csv, "Print a table that spreadsheets read");
    addList(app, "--columns", options->columns, columnNames(), "The columns to show, such as mac,address,name");
    addChoice(app, "--sort", options->order, columnNames(), "The column to order by (default address)");
    return [options, &common] { return discover(*options, common); };
}

const Subcommand kDiscover = {"discover", "Find the cameras on the local network.", kExamples, prepare};
