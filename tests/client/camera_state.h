// The settings of one camera, read in full, and assignments to them.
#pragma once

#include "client/settings/change.h"

inline client::CameraState cameraState() {
    client::CameraState state;
    state.camera.name = "Front door";
    state.camera.httpPort = 80;
    state.camera.address = {{192, 0, 2, 10}};
    state.camera.netmask = {{255, 255, 255, 0}};
    state.camera.gateway = {{192, 0, 2, 1}};
    state.camera.dns = {{{192, 0, 2, 53}}};
    state.services.emplace();
    state.services->upnp = true;
    state.services->ddnsUser = "user";
    state.services->ddnsPassword = client::Secret("old");
    state.services->ddnsHost = "door.example.com";
    state.wifi.emplace();
    state.wifi->enable = true;
    state.wifi->channel = 6;
    state.wifi->ssid = "Workshop";
    state.wifi->security = {4, 3};
    state.wifi->preSharedKey = client::Secret("correct horse battery");
    state.clock = client::ClockState{"2026-01-31T23:59:58", 51, false, false, "ntp.example.com"};
    return state;
}

// "key" and its value; of a secret as well.
inline client::Assignment assignment(const std::string& key, const std::string& value) {
    const client::Setting* setting = client::findSetting(key);
    if (setting == nullptr) throw std::logic_error("no setting " + key);
    if (setting->isSecret()) return {setting, client::Secret(value)};
    return {setting, value};
}

using Values = std::vector<std::pair<std::string, std::string>>;

inline std::vector<client::Assignment> assignments(const Values& values) {
    std::vector<client::Assignment> result;
    for (const auto& [key, value] : values) result.push_back(assignment(key, value));
    return result;
}
