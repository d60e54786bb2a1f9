// Armed failures, the shell, and the pid file's calls.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>

#include "event_log.h"
#include "fake_platform.h"
#include "parts.h"

namespace fake {
namespace {

struct Failures {
    std::mutex mutex;
    std::map<std::string, std::map<int, int>> pending;  // function: calls still to go, errno
};

Failures& failures() {
    static Failures failures;
    return failures;
}

void noteBlockedSignals() {
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    for (const int number : {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1}) {
        if (sigismember(&blocked, number) == 1) return increment(Counter::BlockedSignals);
    }
}

void noteIgnoredSignals() {
    for (const int number : {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler == SIG_IGN) return increment(Counter::IgnoredSignals);
    }
}

void noteOpenDescriptors() {
    for (int descriptor = 3; descriptor < 1024; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1) return increment(Counter::OpenDescriptors);
    }
}

// What a command finds when it starts.
void noteStart() {
    noteBlockedSignals();
    noteIgnoredSignals();
    noteOpenDescriptors();
}

bool isRunFile(const char* path) { return std::strncmp(path, "/var/run/", 9) == 0; }

std::string shownFlags(int flags) {
    std::string text = (flags & O_ACCMODE) == O_WRONLY ? "O_WRONLY"
                       : (flags & O_ACCMODE) == O_RDWR ? "O_RDWR"
                                                       : "O_RDONLY";
    if ((flags & O_CREAT) != 0) text += "|O_CREAT";
    if ((flags & O_EXCL) != 0) text += "|O_EXCL";
    if ((flags & O_TRUNC) != 0) text += "|O_TRUNC";
    return text;
}

}  // namespace

void failCall(const std::string& function, int nth, int error) {
    const std::lock_guard lock(failures().mutex);
    failures().pending[function][nth] = error;
}

bool callFails(const std::string& function) {
    const std::lock_guard lock(failures().mutex);
    const auto found = failures().pending.find(function);
    if (found == failures().pending.end()) return false;
    std::map<int, int> later;
    int error = 0;
    for (const auto& [nth, failure] : found->second) {
        if (nth == 1) error = failure;
        if (nth > 1) later[nth - 1] = failure;
    }
    found->second = later;
    if (error != 0) errno = error;
    return error != 0;
}

void resetFailures() {
    const std::lock_guard lock(failures().mutex);
    failures().pending.clear();
}

}  // namespace fake

using namespace fake;

extern "C" {

int __real_open(const char* path, int flags, ...);
int __real_unlink(const char* path);
long __real_syscall(long number, ...);

int __wrap_system(const char* command) {
    noteStart();
    appendEvent(std::string("system ") + (command == nullptr ? "null" : command));
    return 0;
}

// Does not come back, as if the program had run and ended.
int __wrap_execv(const char* path, char* const arguments[]) {
    noteStart();
    std::string event = std::string("execv ") + path;
    for (char* const* argument = arguments; *argument != nullptr; ++argument) event += std::string(" ") + *argument;
    appendEvent(event);
    _exit(0);
}

long __wrap_syscall(long number, ...) {
    va_list list;
    va_start(list, number);
    long arguments[6];
    for (long& argument : arguments) argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_close_range) {
        if (networkIsScripted()) {
            appendEvent("close_range " + std::to_string(static_cast<unsigned>(arguments[0])) + " " +
                        std::to_string(static_cast<unsigned>(arguments[1])) + " " +
                        std::to_string(static_cast<unsigned>(arguments[2])));
        }
        if (callFails("close_range")) return -1;
    }
    return __real_syscall(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}

int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    if (!isRunFile(path)) return __real_open(path, flags, mode);
    char octal[16];
    std::snprintf(octal, sizeof octal, "%05o", static_cast<unsigned>(mode));
    appendEvent(std::string("open ") + path + " " + shownFlags(flags) + " " + octal);
    if (callFails("open")) return -1;
    return __real_open(realPath(path).c_str(), flags, mode);
}

int __wrap_unlink(const char* path) {
    if (!isRunFile(path)) return __real_unlink(path);
    appendEvent(std::string("unlink ") + path);
    return __real_unlink(realPath(path).c_str());
}

}  // extern "C"
