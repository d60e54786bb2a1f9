// How a command ends.
#pragma once

#include "client/error.h"

enum ExitCode {
    kSuccess = 0,
    kNotFound = 1,            // no such camera, or no answer
    kUsage = 2,               // the command line makes no sense, or holds a value that the camera would refuse
    kThisMachine = 3,         // no such interface, no permission, output that cannot be written
    kCredentialsRefused = 4,  // user name or password
    kRefusedByCamera = 5,     // by the camera
    kUnverified = 6,          // accepted by the camera, but not seen there afterwards
    kDifferent = 7,           // a camera is not as its file has it, where that was asked
};

ExitCode exitCodeOf(client::ErrorKind kind);

// What each says, for a help page.
const char* exitStatusHelp();

// The kind's name in JSON, for programs: it never changes.
const char* stableName(client::ErrorKind kind);
