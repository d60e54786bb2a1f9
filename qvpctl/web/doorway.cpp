#include "qvpctl/web/doorway.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "client/error.h"
#include "qvpctl/whole_file.h"

namespace fs = std::filesystem;

// Where the system clears up behind a session, if it has such a place.
static fs::path placeOfThisUser() {
    const char* place = std::getenv("XDG_RUNTIME_DIR");
    std::error_code error;
    if (place != nullptr && fs::path(place).is_absolute() && fs::is_directory(place, error)) return place;
    return fs::temp_directory_path();
}

static std::string textFor(const std::string& address) {
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><meta name=\"referrer\" "
           "content=\"no-referrer\">"
           "<meta http-equiv=\"refresh\" content=\"0; url=" +
           address + "\"><title>Cameras</title></head>\n<body><p><a href=\"" + address +
           "\">To the cameras</a></p></body></html>\n";
}

std::string makeDoorway(const std::string& address) {
    std::string folder = placeOfThisUser() / "qvpctl-web-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw client::localError("cannot make " + folder, errno);
    std::string file = folder + "/cameras.html";
    try {
        writeWhole(file, textFor(address), 0600);
    } catch (const client::Error&) {
        removeDoorway(file);
        throw;
    }
    return file;
}

void removeDoorway(const std::string& file) {
    if (file.empty()) return;
    unlink(file.c_str());
    rmdir(fs::path(file).parent_path().c_str());
}
