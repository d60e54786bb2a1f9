// Ctrl-C and its like as something to wait for, beside a socket.
#pragma once

#include <csignal>

// As long as it lives, SIGINT, SIGTERM and SIGHUP do not end the program: they make `descriptor()` readable. Those that
// came are done with at its end.
class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
    sigset_t before_;
};
