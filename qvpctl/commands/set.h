// Changing settings, for the commands that do.
#pragma once

#include <string>
#include <vector>

#include "qvpctl/options.h"

struct SetOptions {
    std::string camera;
    std::vector<std::string> assignments;
    bool noWait = false;
};

int setSettings(const SetOptions& options, const CommonOptions& common);
