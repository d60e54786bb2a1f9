// What went wrong, for whoever has to tell it: a kind to act on and a sentence to show.
#pragma once

#include <stdexcept>
#include <string>

namespace client {

enum class ErrorKind {
    NotFound,     // no such camera, or none answered
    Ambiguous,    // more than one camera goes by that name
    BadValue,     // a value that the camera would refuse, found before anything was sent
    Local,        // this machine: no such interface, no permission, a file that cannot be read
    Credentials,  // the camera refused user name or password
    Refused,      // the camera refused a value
    Unverified,   // accepted, but what was read back is something else, or nothing could be read back
};

class Error : public std::runtime_error {
public:
    Error(ErrorKind kind, const std::string& what) : std::runtime_error(what), kind_(kind) {}
    ErrorKind kind() const { return kind_; }

private:
    ErrorKind kind_;
};

// "WHAT: reason", where the reason is that of `error`, an errno value.
Error localError(const std::string& what, int error);

}  // namespace client
