#include "qvpctl/fleet/export_table.h"

#include <algorithm>

#include "client/text.h"
#include "qvpctl/fleet/crew.h"

using client::Error;

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

std::vector<Exported> readForExport(const std::vector<client::Found>& found, const LoginOf& loginOf, size_t parallel,
                                    const CommonOptions& common, int stop) {
    std::vector<Exported> cameras;
    for (const client::Found& one : found) {
        if (one.answered) cameras.push_back({one, {}, {}});
    }
    std::ranges::sort(cameras, {}, [](const Exported& one) { return client::macText(one.found.camera.mac); });
    inParallel(cameras.size(), parallel, stop, [&](size_t i) {
        Exported& camera = cameras[i];
        camera.state.camera = camera.found.camera;
        try {
            const client::Login login = loginOf(camera.found.camera.mac);
            withJob(common, {login}, stop, [&](client::CameraJob& job) { camera.state = job.readAll(camera.found); });
        } catch (const Error& error) {
            camera.error = error;
        }
    });
    return cameras;
}

void writeExport(std::ostream& stream, const std::vector<Exported>& cameras) {
    const std::vector<const client::Setting*> settings = exportedSettings();
    const std::vector<Column> columns = columnsOf(settings);
    const auto output = csv(stream, columns);
    for (const Exported& one : cameras) output->add(rowOf(one, settings));
}
