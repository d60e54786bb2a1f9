// Keys of settings as users write them.
#pragma once

#include <string>
#include <vector>

#include "client/settings/change.h"

// The settings of these keys, a first word such as "wifi" standing for all of its keys; without keys every one. Throws
// Error BadValue for an unknown key, with the nearest.
std::vector<const client::Setting*> settingsNamed(const std::vector<std::string>& keys);

// KEY=VALUE. Throws Error BadValue, and what reading a secret throws.
client::Assignment parseAssignment(const std::string& text);

std::vector<client::Group> groupsOf(const std::vector<const client::Setting*>& settings);

// The table of settings for a help page.
std::string settingsHelp();
