// Another program's standard output.
#pragma once

#include <stddef.h>

constexpr int kStatusUnknown = -1;

// Runs the program `arguments[0]` (found on PATH, no shell; the list ends with null) and puts what it prints into
// `output`, ended with a NUL; what does not fit is dropped. A program that runs for longer than `seconds` is killed.
// Returns its exit status, or kStatusUnknown when it did not start, was killed, or is not told (a process that ignores
// SIGCHLD does not learn its children's).
int runProgram(const char* const* arguments, int seconds, char* output, size_t capacity, size_t* length);
