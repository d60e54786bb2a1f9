// The cameras with their settings as a table that can be edited and applied.
#pragma once

#include <optional>
#include <ostream>
#include <vector>

#include "qvpctl/fleet/fleet.h"

struct Exported {
    client::Found found;
    client::CameraState state;
    std::optional<client::Error> error;  // why only what it tells everybody is known
};

// Those that answered, sorted by MAC.
std::vector<Exported> readForExport(const std::vector<client::Found>& found, const LoginOf& loginOf, size_t parallel,
                                    const CommonOptions& common, int stop);

void writeExport(std::ostream& stream, const std::vector<Exported>& cameras);
