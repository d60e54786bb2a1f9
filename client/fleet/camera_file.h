// A file of cameras: a row a camera, a column a setting.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "client/fleet/fault.h"
#include "client/settings/change.h"

namespace client {

struct FileCamera {
    Mac mac{};
    Place place;
    std::vector<Assignment> assignments;
    std::vector<Place> places;  // of each of them
    std::string address;        // that it had when the file was made; "": the file does not say
};

struct CameraFile {
    std::vector<FileCamera> cameras;
    std::vector<std::string> information;  // the columns that set nothing
    std::vector<Fault> faults;             // all of them; a file with one is not to be used
};

// The secret that a reference stands for, "file:PATH", "env:NAME", "prompt" or "prompt:NAME". Throws Error.
using SecretReader = std::function<Secret(const std::string& key, const std::string& reference)>;

bool isSecretReference(std::string_view text);

// Checks all that can be without a camera. The heading names `mac` and keys of settings; what else 'qvpctl discover'
// prints is for people, and sets nothing. An empty cell leaves its setting alone.
CameraFile readCameraFile(std::string_view csv, const SecretReader& readSecret);

// A cell as the tool writes them, made what it stands for: without the apostrophe that keeps a spreadsheet from taking
// it for a formula, and with the characters that were escaped.
std::string plainCell(std::string_view cell);

// Where to look for what an error says that begins with a key.
Place placeOf(const FileCamera& camera, std::string_view what);

}  // namespace client
