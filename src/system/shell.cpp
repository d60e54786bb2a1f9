#include "system/shell.h"

#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/select.h>
#include <sys/wait.h>
#include <unistd.h>

#include "system/signal_window.h"

static constexpr int kDaemonSignals[] = {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1};
static constexpr int kMostDescriptors = FD_SETSIZE;

static void ignoreSignal(int) {}

// A handler, where the daemon has one, lives as long as the runner: the command starts with the default again.
static void forgetSignals() {
    for (int number : kDaemonSignals) {
        if (signal(number, ignoreSignal) == SIG_IGN) signal(number, SIG_IGN);
    }
    signal(SIGPIPE, SIG_DFL);
    sigprocmask(SIG_SETMASK, originalSignalMask(), nullptr);
}

// So that the port is free, and a lock of the other thread's too, when the daemon dies during a command.
static void closeDescriptors() {
    for (int descriptor = STDERR_FILENO + 1; descriptor < kMostDescriptors; descriptor++) close(descriptor);
}

// The runner is a process of its own because system() has its caller ignore SIGINT while the command runs: a stop sent
// then would be lost. Here only the runner ignores it. It outlives a signal sent to all processes of the daemon's name.
[[noreturn]] static void runAndExit(const char* command) {
    forgetSignals();
    closeDescriptors();
    _exit(system(command) == 0 ? 0 : 1);
}

static pid_t startRunner(const char* command) {
    pid_t runner = fork();
    if (runner == 0) runAndExit(command);
    return runner;
}

// SIGCHLD is ignored in the daemon: the wait ends with ECHILD when the runner has ended.
static void waitFor(pid_t runner) {
    if (runner < 0) return;
    while (waitpid(runner, nullptr, 0) < 0 && errno == EINTR) continue;
}

void shell(const char* command) {
    pid_t runner = startRunner(command);
    openSignalWindow();
    waitFor(runner);
    closeSignalWindow();
}

void shellOnWorker(const char* command) { waitFor(startRunner(command)); }
