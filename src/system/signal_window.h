// When signals may run on the main thread.
//
// SIGALRM, SIGINT, SIGQUIT, SIGTERM and SIGUSR1 stay blocked but for three windows: the wait for a datagram, the wait
// for a shell command, and the wait for the NTP client. So neither a presence report nor a stop ever lands in the
// middle of a store access, and no stop is lost between the test of the stop flag and the wait behind it.
#pragma once

#include <signal.h>

constexpr int kWindowSignals[] = {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1};

// Blocks the five signals and keeps the mask the daemon was started with. Called once, before a handler is installed.
void blockSignals();

// The mask the daemon was started with, for the commands it runs.
const sigset_t* originalSignalMask();

// The mask of an open window, for pselect.
const sigset_t* windowSignalMask();

// Opens and closes a window around a wait; main thread only.
void openSignalWindow();
void closeSignalWindow();
