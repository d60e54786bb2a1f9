// The board's own commands: init scripts and tools, run through the shell.
#pragma once

// Runs a command line and waits for it; its result is not looked at. The command starts with the signal mask the daemon
// was started with and, of the daemon's descriptors, with 0 to 2 alone. Main thread, with the signal window closed; it
// is open during the wait.
void shell(const char* command);

// The same on the upgrade worker's thread, for which there is no signal window.
void shellOnWorker(const char* command);
