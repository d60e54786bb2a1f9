// A file of cameras: a table with a row a camera and a column a setting, or a policy.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/error.h"
#include "client/fleet/fault.h"
#include "client/fleet/policy.h"
#include "client/settings/change.h"

namespace client {

struct FileCamera {
    Mac mac{};
    Place place;
    std::vector<Assignment> assignments;
    std::vector<Place> places;                      // of each of them
    size_t fromPolicy = 0;                          // how many of the last are a policy's, and not its own
    std::string address;                            // that it had when the file was made; "": the file does not say
    std::string product;                            // the same
    bool isSound = true;                            // nothing is wrong with it by itself
    std::optional<Error> unsettled = std::nullopt;  // why it is not known what the policy gives it
};

struct CameraFile {
    std::vector<FileCamera> cameras;
    std::vector<std::string> information;  // the columns that set nothing
    Policy policy;                         // of a table alone: nothing
    std::string table;                     // that stands beside a policy; "": none
    std::vector<Fault> faults;             // all of them; a file with one is not to be used
};

// The secret that a reference stands for, "file:PATH", "env:NAME", "prompt" or "prompt:NAME". Throws Error.
using SecretReader = std::function<Secret(const std::string& key, const std::string& reference)>;

bool isSecretReference(std::string_view text);

// Checks all that can be without a camera. The heading names `mac` and keys of settings; what else 'qvpctl discover'
// prints is for people, and sets nothing. An empty cell leaves its setting alone.
CameraFile readCameraFile(std::string_view csv, const SecretReader& readSecret);

// The same without a look at what two cameras share, for a table that is a part of something.
CameraFile readCameraTable(std::string_view csv, const SecretReader& readSecret);

// A cell as the tool writes them, made what it stands for: without the apostrophe that keeps a spreadsheet from taking
// it for a formula, and with the characters that were escaped.
std::string plainCell(std::string_view cell);

}  // namespace client
