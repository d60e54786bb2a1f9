// The pid file, which also keeps a second instance off the same interface.
#pragma once

// Creates /var/run/qvp-INTERFACE.pid with this process's id. Returns 0, or -1 when it cannot be created; says so when
// it is there already.
int takePidFile(const char* interfaceName);

void removePidFile(const char* interfaceName);
