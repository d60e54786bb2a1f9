#include "system/trace.h"

#include <errno.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <unistd.h>

static constexpr int kLineSize = 512;

static void writeWhole(const char* text, int length) {
    while (length > 0) {
        ssize_t written = write(STDERR_FILENO, text, static_cast<size_t>(length));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        text += written;
        length -= static_cast<int>(written);
    }
}

// Length of what vsnprintf left in a buffer with that much room.
static int cut(int wanted, int room) { return wanted < 0 ? 0 : wanted < room ? wanted : room - 1; }

void trace(const char* format, ...) {
    char line[kLineSize];
    va_list arguments;
    va_start(arguments, format);
    int length = cut(vsnprintf(line, sizeof line, format, arguments), kLineSize);
    va_end(arguments);
    writeWhole(line, length);
}

void traceService(const char* function, int line, const char* format, ...) {
    char text[kLineSize];
    int length = cut(snprintf(text, sizeof text, "[QVP][qvp][%s][Line: %d]: ", function, line), kLineSize);
    va_list arguments;
    va_start(arguments, format);
    int room = kLineSize - length - 1;
    length += cut(vsnprintf(text + length, static_cast<size_t>(room), format, arguments), room);
    va_end(arguments);
    text[length++] = '\n';
    writeWhole(text, length);
}
