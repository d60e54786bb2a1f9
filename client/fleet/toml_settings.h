// Settings as they stand in a table of TOML: time.zone = "..." and a table [time] with zone = "..." are the same.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "client/fleet/camera_file.h"
#include "client/fleet/toml_text.h"

namespace client {

struct TomlSetting {
    Assignment assignment;
    Place place;  // of its value
};

// Everything in the table but the keys that are `others`. Whether a camera takes the values is for the caller to see.
std::vector<TomlSetting> readTomlSettings(const TomlValue& table, std::span<const std::string_view> others,
                                          const SecretReader& readSecret, std::vector<Fault>& faults);

}  // namespace client
