#include "qvpctl/exit_code.h"

struct Meaning {
    ExitCode code;
    const char* name;
};

static Meaning meaningOf(client::ErrorKind kind) {
    switch (kind) {
        case client::ErrorKind::NotFound:
            return {kNotFound, "not-found"};
        case client::ErrorKind::Ambiguous:
            return {kUsage, "ambiguous"};
        case client::ErrorKind::BadValue:
            return {kUsage, "bad-value"};
        case client::ErrorKind::Local:
            return {kThisMachine, "this-machine"};
        case client::ErrorKind::Credentials:
            return {kCredentialsRefused, "credentials-refused"};
        case client::ErrorKind::Refused:
            return {kRefusedByCamera, "refused"};
        case client::ErrorKind::Unverified:
            return {kUnverified, "unverified"};
    }
    return {kThisMachine, "this-machine"};
}

ExitCode exitCodeOf(client::ErrorKind kind) { return meaningOf(kind).code; }

const char* exitStatusHelp() {
    return "Exit status:\n"
           "  0  done, also when nothing had to change\n"
           "  1  no such camera, no answer, or fewer cameras than expected\n"
           "  2  wrong usage, a name of more than one camera, or a value that the camera would refuse\n"
           "  3  this machine: no such interface, no permission, output that cannot be written\n"
           "  4  the camera refused user name or password\n"
           "  5  the camera refused the change\n"
           "  6  sent, but not seen in the camera afterwards\n"
           "  7  with --exit-code: a camera is not as the file has it";
}

const char* stableName(client::ErrorKind kind) { return meaningOf(kind).name; }
