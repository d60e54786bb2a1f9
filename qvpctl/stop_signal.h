// Ctrl-C and its like as something to wait for, beside a socket.
#pragma once

// From here on SIGINT, SIGTERM and SIGHUP no longer end the program: they make `descriptor()` readable.
class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};
