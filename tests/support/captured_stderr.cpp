#include "support/captured_stderr.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>

namespace unit {

CapturedStderr::CapturedStderr() : file_(std::tmpfile()), original_(dup(STDERR_FILENO)) {
    if (file_ == nullptr || original_ < 0 || dup2(fileno(file_), STDERR_FILENO) < 0) std::abort();
}

CapturedStderr::~CapturedStderr() {
    dup2(original_, STDERR_FILENO);
    ::close(original_);
    std::fclose(file_);
}

std::string CapturedStderr::text() const {
    std::string text;
    char part[4096];
    ssize_t length;
    while ((length = pread(fileno(file_), part, sizeof part, static_cast<off_t>(text.size()))) > 0) {
        text.append(part, static_cast<std::size_t>(length));
    }
    return text;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace unit
