#include "common/run_program.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdint.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static constexpr int kNotStarted = 127;

static int64_t millisecondsNow() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

// Signals as a program expects them, not as this process has set them for itself.
static void resetSignals() {
    sigset_t none;
    sigemptyset(&none);
    signal(SIGCHLD, SIG_DFL);
    signal(SIGPIPE, SIG_DFL);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] static void becomeProgram(const char* const* arguments, int output) {
    int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (input >= 0) dup2(input, STDIN_FILENO);
    if (output == STDOUT_FILENO) {
        fcntl(output, F_SETFD, 0);
    } else {
        dup2(output, STDOUT_FILENO);
    }
    resetSignals();
    execvp(arguments[0], const_cast<char* const*>(arguments));
    _exit(kNotStarted);
}

// Reads to the end, beyond `capacity` too so that the program is not held up. False when the time was not enough.
static bool collect(int descriptor, int64_t deadline, char* output, size_t capacity, size_t* length) {
    *length = 0;
    for (;;) {
        int64_t remaining = deadline - millisecondsNow();
        if (remaining <= 0) return false;
        pollfd readable = {descriptor, POLLIN, 0};
        if (poll(&readable, 1, static_cast<int>(remaining)) <= 0) continue;
        char dropped[512];
        bool full = *length == capacity;
        ssize_t count =
            full ? read(descriptor, dropped, sizeof dropped) : read(descriptor, output + *length, capacity - *length);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return true;
        if (!full) *length += static_cast<size_t>(count);
    }
}

static int exitStatus(pid_t child) {
    int status;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return kStatusUnknown;
    }
    bool told = WIFEXITED(status) && WEXITSTATUS(status) != kNotStarted;
    return told ? WEXITSTATUS(status) : kStatusUnknown;
}

int runProgram(const char* const* arguments, int seconds, char* output, size_t capacity, size_t* length) {
    int ends[2];
    *length = 0;
    output[0] = '\0';
    if (pipe2(ends, O_CLOEXEC) != 0) return kStatusUnknown;
    pid_t child = fork();
    if (child == 0) becomeProgram(arguments, ends[1]);
    close(ends[1]);
    if (child > 0) {
        int64_t deadline = millisecondsNow() + static_cast<int64_t>(seconds) * 1000;
        if (!collect(ends[0], deadline, output, capacity - 1, length)) kill(child, SIGKILL);
        output[*length] = '\0';
    }
    close(ends[0]);
    return child > 0 ? exitStatus(child) : kStatusUnknown;
}
