// qvpctl export: the cameras of the network as a file that can be edited and applied.
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>

#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/tool.h"

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

// A clock's time is another a moment later, and a secret stays in the camera.
static std::vector<const client::Setting*> exportedSettings() {
    std::vector<const client::Setting*> settings;
    for (const client::Setting& setting : client::allSettings()) {
        const bool isTime = std::string_view(setting.key) == "time.now";
        if (!setting.isSecret() && !setting.isReadOnly() && !isTime) settings.push_back(&setting);
    }
    return settings;
}

static std::vector<Column> columnsOf(const std::vector<const client::Setting*>& settings) {
    std::vector<Column> columns;
    for (const char* key : {"mac", "product", "model", "firmware", "hardware"}) columns.push_back({"", key, 0});
    for (const client::Setting* setting : settings) columns.push_back({"", setting->key, 0});
    return columns;
}

struct Exported {
    client::Found found;
    client::CameraState state;
    std::optional<Error> error;
};

// What a camera has by DHCP is no setting of its own.
static bool isOfDhcp(const client::Setting& setting, const client::CameraState& state) {
    const std::string key = setting.key;
    return state.camera.dhcp && (key == "ipv4.address" || key == "ipv4.gateway" || key == "ipv4.dns");
}

// What could not be read, and what a camera has but would not take, is an empty cell.
static Record rowOf(const Exported& camera, const std::vector<const client::Setting*>& settings) {
    const client::Camera& identity = camera.found.camera;
    Record row = {
        {"mac",      client::macText(identity.mac)},
        {"product",  identity.product             },
        {"model",    identity.model               },
        {"firmware", identity.firmware            },
        {"hardware", identity.hardware            },
    };
    for (const client::Setting* setting : settings) {
        const bool isRead = !camera.error || setting->group == client::Group::Basic;
        const bool isLeftOut = !isRead || isOfDhcp(*setting, camera.state);
        const auto value = isLeftOut ? std::nullopt : client::restorableValue(*setting, camera.state);
        row[setting->key] = value.value_or("");
    }
    return row;
}

static std::vector<Exported> readAll(const ExportOptions& options, const CommonOptions& common, int stop) {
    const client::Login login = readLogin(common);
    std::vector<Exported> cameras;
    for (const client::Found& one : callRoll(common, stop, {})) {
        if (one.answered) cameras.push_back({one, {}, {}});
    }
    std::ranges::sort(cameras, {}, [](const Exported& one) { return client::macText(one.found.camera.mac); });
    if (cameras.empty()) throw Error(ErrorKind::NotFound, "no camera answered");
    inParallel(cameras.size(), options.fleet.parallel, stop, [&](size_t i) {
        Exported& camera = cameras[i];
        camera.state.camera = camera.found.camera;
        try {
            withJob(common, {login}, stop, [&](client::CameraJob& job) { camera.state = job.readAll(camera.found); });
        } catch (const Error& error) {
            camera.error = error;
        }
    });
    if (isStopped(stop)) throw Error(ErrorKind::Unverified, "stopped: nothing was written");
    return cameras;
}

// The file appears when it is whole.
static void write(const std::string& path, const std::vector<Exported>& cameras) {
    const std::vector<const client::Setting*> settings = exportedSettings();
    const std::vector<Column> columns = columnsOf(settings);
    const std::string whole = path + ".new";
    errno = 0;
    std::ofstream file(whole, std::ios::binary | std::ios::trunc);
    if (!file) throw client::localError("cannot write " + printable(whole), errno != 0 ? errno : EIO);
    const auto output = csv(file, columns);
    for (const Exported& one : cameras) output->add(rowOf(one, settings));
    file.close();
    std::error_code failure;
    fs::rename(whole, path, failure);
    if (failure) throw client::localError("cannot write " + printable(path), failure.value());
}

static int exportCameras(const ExportOptions& options, const CommonOptions& common) {
    const std::string& path = options.fleet.file;
    if (fs::exists(path) && !options.replace) {
        throw Error(ErrorKind::Local, printable(path) + " is there already; --replace takes its place");
    }
    const StopSignal stop;
    const std::vector<Exported> cameras = readAll(options, common, stop.descriptor());
    write(path, cameras);
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
