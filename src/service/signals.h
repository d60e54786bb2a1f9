// What each signal does to the daemon.
#pragma once

// Installs the dispositions: stop, ignore, presence report.
void installSignalHandlers();

// Handler of SIGINT, SIGQUIT, SIGTERM and SIGUSR1.
void signal_handler(int number);
