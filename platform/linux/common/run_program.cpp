#include "common/run_program.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdint.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "common/milliseconds.h"
#include "common/small_file.h"

// Between the caller and the program stands a runner, a process of its own. A caller that ignores SIGCHLD learns
// nothing of its children; the runner does of its child, and tells the exit status through a pipe. It also holds the
// time limit, whatever becomes of the caller.
static constexpr int kNotStarted = 127;
static constexpr int kMostDescriptors = FD_SETSIZE;

// Signals as a program expects them, not as the caller and the runner have set them for themselves.
static void resetSignals() {
    sigset_t none;
    sigemptyset(&none);
    for (int number = 1; number < NSIG; number++) signal(number, SIG_DFL);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] static void becomeProgram(const char* const* arguments, int output) {
    setpgid(0, 0);
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

// A runner that outlives its caller must not keep the caller's port or locks.
static void closeDescriptorsBut(int kept) {
    for (int descriptor = STDERR_FILENO + 1; descriptor < kMostDescriptors; descriptor++) {
        if (descriptor != kept) close(descriptor);
    }
}

// SIGCHLD is blocked, so one that comes between the look and the wait ends the wait. False when the time is up.
static bool waitUntil(int64_t deadline, pid_t program, int& status) {
    sigset_t childSignal;
    sigemptyset(&childSignal);
    sigaddset(&childSignal, SIGCHLD);
    while (waitpid(program, &status, WNOHANG) != program) {
        const int remaining = static_cast<int>(deadline - millisecondsNow());
        if (remaining <= 0) return false;
        timespec pause;
        pause.tv_sec = remaining / 1000;
        pause.tv_nsec = remaining % 1000 * 1'000'000L;
        sigtimedwait(&childSignal, nullptr, &pause);
    }
    return true;
}

// A killed program is not waited for: one that hangs in the kernel would not end.
static int exitStatus(pid_t program, int64_t deadline) {
    int status;
    if (!waitUntil(deadline, program, status)) {
        kill(-program, SIGKILL);
        return kStatusUnknown;
    }
    bool told = WIFEXITED(status) && WEXITSTATUS(status) != kNotStarted;
    return told ? WEXITSTATUS(status) : kStatusUnknown;
}

// With every signal blocked the runner outlives one sent to all processes of the caller's name.
[[noreturn]] static void runAndReport(const char* const* arguments, int seconds, int output, int report) {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    signal(SIGCHLD, SIG_DFL);

    int64_t deadline = millisecondsNow() + static_cast<int64_t>(seconds) * 1000;
    pid_t program = fork();
    if (program == 0) becomeProgram(arguments, output);
    if (program > 0) setpgid(program, program);  // both do it, so that it is done for either
    closeDescriptorsBut(report);
    int status = program > 0 ? exitStatus(program, deadline) : kStatusUnknown;
    writeAll(report, reinterpret_cast<const char*>(&status), sizeof status);
    _exit(0);
}

struct Collected {
    char* bytes;
    size_t capacity, length;
};

// Reads at most `most` bytes, those beyond the capacity too so that the program is not held up. Returns their number,
// 0 at the end or where reading failed.
static size_t takeOutput(int descriptor, size_t most, Collected& output) {
    char dropped[512];
    size_t room = output.capacity - output.length;
    char* target = room > 0 ? output.bytes + output.length : dropped;
    size_t size = room > 0 ? room : sizeof dropped;
    ssize_t count;
    do {
        count = read(descriptor, target, size < most ? size : most);
    } while (count < 0 && errno == EINTR);
    if (count <= 0) return 0;
    if (room > 0) output.length += static_cast<size_t>(count);
    return static_cast<size_t>(count);
}

// What the pipe holds now and no more: what the program left running may print without end.
static void takeRest(int descriptor, Collected& output) {
    int left = 0;
    if (ioctl(descriptor, FIONREAD, &left) != 0) return;
    while (left > 0) {
        size_t count = takeOutput(descriptor, static_cast<size_t>(left), output);
        if (count == 0) return;
        left -= static_cast<int>(count);
    }
}

// Takes the output until the program has closed it, or has ended: what it left running can hold it open.
static void collect(int descriptor, int report, Collected& output) {
    pollfd ready[] = {
        {report,     POLLIN, 0},
        {descriptor, POLLIN, 0},
    };
    for (;;) {
        if (poll(ready, 2, -1) < 0) continue;
        if (ready[0].revents != 0) return takeRest(descriptor, output);
        if (takeOutput(descriptor, SIZE_MAX, output) == 0) return;
    }
}

// A runner that is gone without a report was killed.
static int readReport(int report) {
    int status;
    bool told = readUpTo(report, reinterpret_cast<char*>(&status), sizeof status) == sizeof status;
    return told ? status : kStatusUnknown;
}

static void closeBoth(const int ends[2]) {
    close(ends[0]);
    close(ends[1]);
}

int runProgram(const char* const* arguments, int seconds, char* output, size_t capacity, size_t& length) {
    int outputEnds[2];
    int reportEnds[2];
    length = 0;
    output[0] = '\0';
    if (pipe2(outputEnds, O_CLOEXEC) != 0) return kStatusUnknown;
    if (pipe2(reportEnds, O_CLOEXEC) != 0) {
        closeBoth(outputEnds);
        return kStatusUnknown;
    }
    pid_t runner = fork();
    if (runner == 0) runAndReport(arguments, seconds, outputEnds[1], reportEnds[1]);
    close(outputEnds[1]);
    close(reportEnds[1]);
    int status = kStatusUnknown;
    if (runner > 0) {
        Collected collected = {output, capacity - 1, 0};
        collect(outputEnds[0], reportEnds[0], collected);
        status = readReport(reportEnds[0]);
        length = collected.length;
        output[length] = '\0';
        while (waitpid(runner, nullptr, 0) < 0 && errno == EINTR) continue;
    }
    close(outputEnds[0]);
    close(reportEnds[0]);
    return status;
}
