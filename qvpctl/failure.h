// How a command ends, and how it gives up.
#pragma once

#include <stdexcept>
#include <string>

enum ExitCode {
    kSuccess = 0,
    kNoCamera = 1,     // nobody answered
    kUsageError = 2,   // the command line makes no sense
    kSystemError = 3,  // no such interface, no permission, output that cannot be written
};

class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& what) : std::runtime_error(what), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

// "WHAT: reason", where the reason is that of `error`, an errno value.
Failure systemFailure(const std::string& what, int error);
