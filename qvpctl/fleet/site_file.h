// Files of cameras on disk: a table (CSV), or a policy (TOML) that may have a table beside it.
#pragma once

#include <string>
#include <vector>

#include "client/error.h"
#include "client/fleet/camera_file.h"

// Throws Error Local.
std::string readWhole(const std::string& path);

// Throws Error Local for a file that cannot be read, and BadValue with every fault of it.
client::CameraFile loadCameraFile(const std::string& path);

// Tells it from what it was before, with the table beside it. Throws Error Local.
std::string digestOfCameraFile(const std::string& path);

// The path of what a place is in: of the file, or of the table beside it.
std::string pathOf(const std::string& path, const client::CameraFile& file, client::Place place);

// The faults as one error, each with file, line and column.
client::Error faultsOf(const std::string& path, const client::CameraFile& file,
                       const std::vector<client::Fault>& faults);
