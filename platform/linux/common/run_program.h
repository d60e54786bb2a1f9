// Another program's standard output.
#pragma once

#include <stddef.h>

constexpr int kStatusUnknown = -1;

// Runs the program `arguments[0]` (found on PATH, no shell; the list ends with null) until it ends, and puts what it
// has printed by then into `output`, ended with a NUL; what does not fit is dropped. After `seconds` the program and
// its process group are killed, whatever they have done with their output; what was printed before stays. The program
// starts with all signals at their defaults, none blocked, and reads from /dev/null.
//
// Returns its exit status, or kStatusUnknown when it did not start, was killed, or ended with 127. How the caller
// treats SIGCHLD does not matter, and none of its signal settings is changed.
int runProgram(const char* const* arguments, int seconds, char* output, size_t capacity, size_t& length);
