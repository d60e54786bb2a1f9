// Trace lines on standard error. Each is put together first and handed to one write(2), so that lines of the worker's
// thread do not mix with others; what the system takes only in part is written in several.
#pragma once

// Writes the text as it stands; a line longer than 511 bytes is cut.
void trace(const char* format, ...) __attribute__((format(printf, 1, 2)));

// "[QVP][qvp][FUNCTION][Line: LINE]: MESSAGE\n", the service's own lines.
void traceService(const char* function, int line, const char* format, ...) __attribute__((format(printf, 3, 4)));
