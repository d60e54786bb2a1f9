#include "qvpctl/known_cameras.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>

#include "client/error.h"
#include "client/text.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/whole_file.h"

namespace fs = std::filesystem;

// Empty: there is none.
static fs::path cacheFile() {
    const char* cache = std::getenv("XDG_CACHE_HOME");
    if (cache != nullptr && fs::path(cache).is_absolute()) return fs::path(cache) / "qvpctl/cameras";
    const char* home = std::getenv("HOME");
    return home != nullptr && *home == '/' ? fs::path(home) / ".cache/qvpctl/cameras" : fs::path();
}

static bool canBeTyped(const std::string& name) { return !name.empty() && printable(name) == name; }

static std::string linesOf(const std::vector<client::Found>& cameras) {
    std::string lines;
    std::set<std::string> names;  // of two cameras of one name, or heard twice, one line
    for (const client::Found& one : cameras) {
        for (const std::string& name : {one.camera.name, client::macText(one.camera.mac)}) {
            if (canBeTyped(name) && names.insert(name).second) lines += name + '\n';
        }
    }
    return lines;
}

void rememberCameras(const std::vector<client::Found>& cameras) {
    const fs::path file = cacheFile();
    if (file.empty()) return;
    std::error_code ignored;
    fs::create_directories(file.parent_path(), ignored);
    try {
        writeWhole(file, linesOf(cameras));
    } catch (const client::Error&) {
        return;  // completion knows fewer names
    }
}

std::vector<std::string> knownCameras() {
    std::vector<std::string> names;
    std::ifstream file(cacheFile());
    for (std::string line; std::getline(file, line);) {
        if (canBeTyped(line)) names.push_back(line);
    }
    return names;
}
