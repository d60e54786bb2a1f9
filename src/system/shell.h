// The board's own commands: init scripts and tools, run through the shell.
#pragma once

// Runs a command line and waits for it; its result is not looked at. The command starts with the signal mask the daemon
// was started with and without the daemon's descriptors. Main thread; signals are served during the wait.
void shell(const char* command);

// The same on the upgrade worker's thread, which serves no signals.
void shellOnWorker(const char* command);
