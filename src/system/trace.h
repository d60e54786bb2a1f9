// Trace lines on standard error. Each is put together first and written at once, so that lines of the worker's thread
// do not mix with others; one for which there is no room is dropped.
#pragma once

#include <stddef.h>
#include <string.h>

constexpr int kTraceLineSize = 512;

// Writes the text as it stands; a line longer than 511 bytes is cut.
void trace(const char* format, ...) __attribute__((format(printf, 1, 2)));

// "[QVP][qvp][FUNCTION][Line: LINE]: MESSAGE\n", the service's own lines.
void traceService(const char* function, int line, const char* format, ...) __attribute__((format(printf, 3, 4)));

// A line put together from words, for those of every request: a format costs more than all the rest of them.
struct TraceLine {
    size_t length;
    char text[kTraceLineSize];
};

// A line longer than 511 bytes is cut.
void traceAdd(TraceLine& line, const char* word, size_t length);
void traceAdd(TraceLine& line, int number);
void traceWrite(const TraceLine& line);

template <typename Letter>
inline void traceAdd(TraceLine& line, Letter* const& word) {
    traceAdd(line, word, strlen(word));
}

// A constant, copied with a move or two where it fits.
template <size_t Size>
inline void traceAdd(TraceLine& line, const char (&word)[Size]) {
    if (line.length + Size > kTraceLineSize) return traceAdd(line, word, Size - 1);
    memcpy(line.text + line.length, word, Size - 1);
    line.length += Size - 1;
}

template <typename... Words>
inline void traceWords(const Words&... words) {
    TraceLine line;
    line.length = 0;
    (traceAdd(line, words), ...);
    traceWrite(line);
}
