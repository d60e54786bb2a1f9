// What the checks of an operation found. They run in a process of their own, so that a crash is one operation's fault,
// and those that they start write to the same report.
#pragma once

#include <signal.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

struct Settings {
    bool store, integers, zone;  // what may be changed
    const char* interface;
    const char *gateway, *dns, *dns2;  // what has to come; null: anything may
    const char* administrator;
    const char* firmware;       // a file to install
    const char* configuration;  // a file to install
    const char* folder;         // for files of the checks' own
    const char* only;           // the operation to check; null: all
};

// A line on standard output each. A skipped operation was not called at all, or not for what the line tells.
__attribute__((format(printf, 1, 2))) void fail(const char* format, ...);
__attribute__((format(printf, 1, 2))) void skip(const char* format, ...);

// Stands behind the operation that keeps its contract.
__attribute__((format(printf, 1, 2))) void note(const char* format, ...);

bool hasFailed();

// Runs an operation's checks in a process and prints its line. False when the operation failed.
bool runChecks(const char* operation, void (*check)(const Settings&), const Settings& settings);

constexpr int kFinished = 42;  // what a process of the checks ends with, unless the library ends it

// How long a process of the checks may take.
extern unsigned patience;

// Runs the work in a process of its own, which knows of the platform library what this one does: in a process that has
// not called it yet, nothing. Returns its wait status.
template <typename Work>
int tryInProcess(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        alarm(patience);
        work();
        _exit(kFinished);
    }
    int status = -1;
    if (child > 0) waitpid(child, &status, 0);
    return status;
}

inline bool isFinished(int status) { return WIFEXITED(status) && WEXITSTATUS(status) == kFinished; }

// The same for a part of an operation's checks, which end as their part does.
template <typename Work>
void inProcess(Work work) {
    const int status = tryInProcess(work);
    if (WIFSIGNALED(status)) raise(WTERMSIG(status));
    if (!isFinished(status)) _exit(0);
}
