#include "system/trace.h"

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "system/trace_output.h"

// Length of what vsnprintf left in a buffer with that much room.
static int cut(int wanted, int room) { return wanted < 0 ? 0 : wanted < room ? wanted : room - 1; }

void trace(const char* format, ...) {
    char line[kTraceLineSize];
    va_list arguments;
    va_start(arguments, format);
    int length = cut(vsnprintf(line, sizeof line, format, arguments), kTraceLineSize);
    va_end(arguments);
    putTrace(line, static_cast<size_t>(length));
}

void traceService(const char* function, int line, const char* format, ...) {
    char text[kTraceLineSize];
    int length = cut(snprintf(text, sizeof text, "[QVP][qvp][%s][Line: %d]: ", function, line), kTraceLineSize);
    va_list arguments;
    va_start(arguments, format);
    int room = kTraceLineSize - length - 1;
    length += cut(vsnprintf(text + length, static_cast<size_t>(room), format, arguments), room);
    va_end(arguments);
    text[length++] = '\n';
    putTrace(text, static_cast<size_t>(length));
}

void traceAdd(TraceLine& line, const char* word, size_t length) {
    const size_t room = kTraceLineSize - 1 - line.length;
    const size_t taken = length < room ? length : room;
    memcpy(line.text + line.length, word, taken);
    line.length += taken;
}

void traceAdd(TraceLine& line, int number) {
    char digits[12];
    char* const end = digits + sizeof digits;
    char* start = end;
    unsigned left = number < 0 ? 0u - static_cast<unsigned>(number) : static_cast<unsigned>(number);
    do {
        *--start = static_cast<char>('0' + left % 10);
        left /= 10;
    } while (left != 0);
    if (number < 0) *--start = '-';
    traceAdd(line, start, static_cast<size_t>(end - start));
}

void traceWrite(const TraceLine& line) { putTrace(line.text, line.length); }
