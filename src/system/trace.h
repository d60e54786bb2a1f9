// Trace lines on standard error, each written whole by one write(2), so that lines of a signal handler or of the worker
// thread never mix with others.
#pragma once

// Writes the text as it stands; a line longer than 511 bytes is cut.
void trace(const char* format, ...) __attribute__((format(printf, 1, 2)));

// "[QVP][qvp][FUNCTION][Line: LINE]: MESSAGE\n", the service's own lines.
void traceService(const char* function, int line, const char* format, ...) __attribute__((format(printf, 3, 4)));
