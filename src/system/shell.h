// The board's own commands: init scripts and tools, run through the shell.
#pragma once

// Boots the camera again, five seconds later, in the background.
constexpr char kRebootCommand[] = "/var/reboot -d 5 2>/dev/null 1>/dev/null&";

// Runs a command line and waits for it; its result is not looked at. The command starts with the signal mask the daemon
// was started with and, of the daemon's descriptors, with 0 to 2 alone (without close_range, with those from FD_SETSIZE
// up as well). Main thread, with the signal window closed; it is open during the wait.
void shell(const char* command);

// The same on the upgrade worker's thread, for which there is no signal window.
void shellOnWorker(const char* command);
