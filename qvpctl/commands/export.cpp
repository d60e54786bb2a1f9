// qvpctl export: the cameras of the network as a file that can be edited and applied.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>

#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/fleet/export_table.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/tool.h"
#include "qvpctl/whole_file.h"

namespace fs = std::filesystem;
using client::Error;
using client::ErrorKind;

static const char kExamples[] =
    "  qvpctl export site.csv             every camera that answers, with its settings\n"
    "  qvpctl export site.csv --replace   the same, in the place of an older one\n";

static const Column kWritten[] = {
    {"", "result", 0},
};

struct ExportOptions {
    FleetOptions fleet;
    bool replace = false;
};

static std::vector<Exported> readAll(const ExportOptions& options, const CommonOptions& common, int stop) {
    client::Login login = readLogin(common);
    const std::vector<client::Found> found = callRoll(common, stop, {});
    std::vector<Exported> cameras = readForExport(
        found, [&](Mac) { return login; }, options.fleet.parallel, common, stop);
    if (cameras.empty()) throw Error(ErrorKind::NotFound, "no camera answered");
    if (isStopped(stop)) throw Error(ErrorKind::Unverified, "stopped: nothing was written");
    return cameras;
}

static int exportCameras(const ExportOptions& options, const CommonOptions& common) {
    const std::string& path = options.fleet.file;
    if (fs::exists(path) && !options.replace) {
        throw Error(ErrorKind::Local, printable(path) + " is there already; --replace takes its place");
    }
    refuseOtherThanFiles(path);
    const StopSignal stop;
    const std::vector<Exported> cameras = readAll(options, common, stop.descriptor());
    std::ostringstream text;
    writeExport(text, cameras);
    writeWhole(path, text.str());
    ExitCode worst = kSuccess;
    for (const Exported& one : cameras) {
        if (!one.error) continue;
        say(client::macText(one.found.camera.mac) +
            ": only what it tells everybody is in the file: " + one.error->what());
        worst = std::max(worst, exitCodeOf(one.error->kind()));
    }
    const std::string count = std::to_string(cameras.size()) + (cameras.size() == 1 ? " camera" : " cameras");
    const auto output = tableOrJson(common.json, kWritten);
    output->add({
        {"file",    path                         },
        {"cameras", cameras.size()               },
        {"result",  count + " written, no secret"}
    });
    output->finish();
    return worst;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<ExportOptions>();
    addNeededWord(app, "FILE", options->fleet.file, "The table (CSV) to write");
    addFlag(app, "--replace", options->replace, "Write it also where there is such a file");
    addParallel(app, options->fleet);
    return [options, &common] { return exportCameras(*options, common); };
}

const Subcommand kExport = {"export", "Write the settings of all cameras into a file.", kExamples, prepare};
