// What is known of a camera's settings, and what is wanted of them: the same in both cases.
#pragma once

#include <optional>

#include "client/camera.h"
#include "client/commands/clock.h"
#include "client/commands/network_services.h"
#include "client/commands/wireless.h"

namespace client {

// The parts that were not read are not there.
struct CameraState {
    Camera camera;  // from its discovery reply; only what a presence report tells of one that cannot answer
    std::optional<NetworkServices> services;
    std::optional<WifiSettings> wifi;
    std::optional<ClockState> clock;
    std::string timeToSet;           // "YYYYMMDDhhmmss", "now", or empty: leave the clock alone
    std::optional<Secret> password;  // a new one; a camera never tells the one it has
};

}  // namespace client
