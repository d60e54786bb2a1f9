#include "qvpctl/metrics/metrics_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "client/error.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/tool.h"

namespace fs = std::filesystem;
using client::Error;
using client::ErrorKind;

static constexpr std::chrono::seconds kPause(1);
static constexpr std::chrono::seconds kSignOfLife(30);

// A device or a pipe must not be replaced by a file.
static void refuseOtherThanFiles(const std::string& path) {
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

// The same for a file that was not there.
static int writeNew(const std::string& path, const std::string& text) {
    unlink(path.c_str());
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) return errno;
    const int error = writeAll(descriptor, text);
    return close(descriptor) == 0 || error != 0 ? error : errno;
}

MetricsFile::MetricsFile(std::string path, Time now) : path_(std::move(path)), tried_(now) {
    refuseOtherThanFiles(path_);
    write();
}

MetricsFile::~MetricsFile() { unlink(path_.c_str()); }

void MetricsFile::add(const client::Presence& report, unsigned interfaceIndex, time_t arrival) {
    metrics_.add(report, interfaceIndex, arrival);
    isBehind_ = true;
}

MetricsFile::Time MetricsFile::due() const { return tried_ + (isBehind_ ? kPause : kSignOfLife); }

// The file appears when it is whole. It need not outlive a power cut, as nobody would keep it up to date.
void MetricsFile::write() const {
    const std::string whole = path_ + "." + std::to_string(getpid());
    int error = writeNew(whole, metrics_.text());
    if (error == 0 && rename(whole.c_str(), path_.c_str()) != 0) error = errno;
    if (error == 0) return;
    unlink(whole.c_str());
    throw client::localError("cannot write " + printable(path_), error);
}

void MetricsFile::keepUp(Time now) {
    if (now < due()) return;
    tried_ = now;
    try {
        write();
        if (isFailing_) say(path_ + " is written again");
        isBehind_ = isFailing_ = false;
    } catch (const Error& error) {
        if (!isFailing_) say(error.what());
        isBehind_ = isFailing_ = true;
    }
}
