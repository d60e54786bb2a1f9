// A policy (TOML): settings for many cameras, by default and by groups, and the cameras or the table that lists them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "client/fleet/camera_file.h"

namespace client {

// A table beside the policy, with where its own secrets come from.
struct PolicyTable {
    std::string text;
    SecretReader readSecret;
};

// Throws Error.
using TableReader = std::function<PolicyTable(const std::string& path)>;

// Checks all that can be without a camera.
CameraFile readPolicyFile(std::string_view toml, const SecretReader& readSecret, const TableReader& readTable);

// The table that it names, if any; nothing else is checked.
std::optional<std::string> tableNamedIn(std::string_view toml);

}  // namespace client
