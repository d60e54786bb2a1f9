#include "util/signal_window.h"

static constexpr int kWindowSignals[] = {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1};

static sigset_t originalMask;
static sigset_t closedMask;
static sigset_t openMask;

void blockSignals() {
    sigprocmask(SIG_SETMASK, nullptr, &originalMask);
    closedMask = originalMask;
    openMask = originalMask;
    for (int number : kWindowSignals) {
        sigaddset(&closedMask, number);
        sigdelset(&openMask, number);
    }
    closeSignalWindow();
}

const sigset_t* originalSignalMask() { return &originalMask; }

const sigset_t* windowSignalMask() { return &openMask; }

void openSignalWindow() { sigprocmask(SIG_SETMASK, &openMask, nullptr); }

void closeSignalWindow() { sigprocmask(SIG_SETMASK, &closedMask, nullptr); }
