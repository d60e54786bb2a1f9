// /var/run for the daemon under test: a folder of the test program's own, removed at its end.
#include <stdlib.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "parts.h"
#include "scripted_network.h"

namespace fake {
namespace {

struct RunFolder {
    std::filesystem::path path;
    RunFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvp-run-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            std::perror("run folder");
            std::abort();
        }
        path = pattern;
    }
    ~RunFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;
};

const RunFolder& folder() {
    static const RunFolder folder;
    return folder;
}

}  // namespace

std::string runFolder() { return folder().path.string(); }

std::string realPath(const char* path) {
    static const std::string prefix = "/var/run";
    if (std::strncmp(path, "/var/run/", 9) != 0) return path;
    return runFolder() + (path + prefix.size());
}

void emptyRunFolder() {
    for (const auto& entry : std::filesystem::directory_iterator(runFolder()))
        std::filesystem::remove_all(entry.path());
}

}  // namespace fake
