#include "system/signal_window.h"

static sigset_t g_stOriginalMask;
static sigset_t g_stClosedMask;
static sigset_t g_stOpenMask;

void blockSignals() {
    sigprocmask(SIG_SETMASK, nullptr, &g_stOriginalMask);
    g_stClosedMask = g_stOriginalMask;
    g_stOpenMask = g_stOriginalMask;
    for (int number : kWindowSignals) {
        sigaddset(&g_stClosedMask, number);
        sigdelset(&g_stOpenMask, number);
    }
    closeSignalWindow();
}

const sigset_t* originalSignalMask() { return &g_stOriginalMask; }

const sigset_t* windowSignalMask() { return &g_stOpenMask; }

void openSignalWindow() { sigprocmask(SIG_SETMASK, &g_stOpenMask, nullptr); }

void closeSignalWindow() { sigprocmask(SIG_SETMASK, &g_stClosedMask, nullptr); }
