#include "system/shell.h"

#include <errno.h>
#include <limits.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/signal_window.h"

static constexpr int kFirstDescriptor = STDERR_FILENO + 1;
static constexpr int kMostDescriptors = FD_SETSIZE;

static void ignoreSignal(int) {}

// A handler, where the daemon has one, gives way to one that does nothing, and that to the default when the command
// starts. What the daemon ignores stays ignored but for SIGPIPE and SIGXFSZ.
static void forgetSignals() {
    for (int number : kWindowSignals) {
        if (signal(number, ignoreSignal) == SIG_IGN) signal(number, SIG_IGN);
    }
    signal(SIGPIPE, SIG_DFL);
    signal(SIGXFSZ, SIG_DFL);
    sigprocmask(SIG_SETMASK, originalSignalMask(), nullptr);
}

// False where the headers or the kernel do not know the call, for which not every C library has a function.
static bool closeAtOnce() {
#ifdef SYS_close_range
    return syscall(SYS_close_range, kFirstDescriptor, UINT_MAX, 0) == 0;
#else
    return false;
#endif
}

// So that the port is free, and a lock of the other thread's too, when the daemon dies during a command.
static void closeDescriptors() {
    if (closeAtOnce()) return;
    for (int descriptor = kFirstDescriptor; descriptor < kMostDescriptors; descriptor++) close(descriptor);
}

// The runner is a process of its own because system() has its caller ignore SIGINT while the command runs: a stop sent
// then would be lost. Here only the runner ignores it. It outlives a signal sent to all processes of the daemon's name.
// Nobody asks how it ended.
[[noreturn]] static void runCommand(const char* command) { _exit(system(command)); }

// Not system(): the child of a thread among others may do before its exec what a signal handler may, and no more.
[[noreturn]] static void becomeCommand(const char* command) {
    const char* arguments[] = {"sh", "-c", command, nullptr};
    execv("/bin/sh", const_cast<char**>(arguments));
    _exit(127);
}

// `run` does not return.
static pid_t start(void (*run)(const char*), const char* command) {
    pid_t child = fork();
    if (child == 0) {
        forgetSignals();
        closeDescriptors();
        run(command);
    }
    return child;
}

// SIGCHLD is ignored in the daemon: the wait ends with ECHILD when the child has ended.
static void waitFor(pid_t child) {
    if (child < 0) return;
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
}

void shell(const char* command) {
    pid_t runner = start(runCommand, command);
    openSignalWindow();
    waitFor(runner);
    closeSignalWindow();
}

void shellOnWorker(const char* command) { waitFor(start(becomeCommand, command)); }
