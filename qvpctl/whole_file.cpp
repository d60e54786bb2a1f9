#include "qvpctl/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "client/error.h"
#include "qvpctl/terminal_text.h"

namespace fs = std::filesystem;
using client::Error;
using client::ErrorKind;

void refuseOtherThanFiles(const std::string& path) {
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (!fs::exists(status) || fs::is_regular_file(status)) return;
    throw Error(ErrorKind::Local, "cannot write " + printable(path) + ": it is no regular file");
}

// Zero, or an errno value.
static int writeAll(int descriptor, const std::string& text) {
    for (size_t done = 0; done < text.size();) {
        const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
        if (written < 0) return errno;
        done += static_cast<size_t>(written);
    }
    return 0;
}

// The same for a file that was not there. One that is to take the place of another lets the same users in.
static int writeNew(const std::string& path, const std::string& text, mode_t mode, const std::string& before) {
    unlink(path.c_str());
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0) return errno;
    struct stat status;
    int error = stat(before.c_str(), &status) == 0 && fchmod(descriptor, status.st_mode & 0777) != 0 ? errno : 0;
    if (error == 0) error = writeAll(descriptor, text);
    return close(descriptor) == 0 || error != 0 ? error : errno;
}

void writeWhole(const std::string& path, const std::string& text, mode_t mode) {
    refuseOtherThanFiles(path);
    std::error_code none;
    const fs::path followed = fs::canonical(path, none);  // a link stays, and its file is replaced
    const std::string file = none ? path : followed.string();
    const std::string whole = file + "." + std::to_string(getpid());
    int error = writeNew(whole, text, mode, file);
    if (error == 0 && rename(whole.c_str(), file.c_str()) != 0) error = errno;
    if (error == 0) return;
    unlink(whole.c_str());
    throw client::localError("cannot write " + printable(path), error);
}
