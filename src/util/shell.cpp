#include "util/shell.h"

#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "util/signal_window.h"

static constexpr int kDefaultSignals[] = {SIGINT, SIGQUIT, SIGTERM, SIGPIPE};

// The runner is a process of its own because system() has its caller ignore SIGINT while the command runs: a stop sent
// then would be lost. Here only the runner ignores it.
[[noreturn]] static void runAndExit(const char* command) {
    for (int number : kDefaultSignals) signal(number, SIG_DFL);
    sigprocmask(SIG_SETMASK, originalSignalMask(), nullptr);
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
