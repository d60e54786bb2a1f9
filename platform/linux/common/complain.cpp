#include "common/complain.h"

#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

// What has room takes a line of this length: a pipe has a page free then.
static bool hasRoom() {
    pollfd output = {STDERR_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) > 0;
}

void complain(const char* format, ...) {
    static unsigned dropped;
    if (!hasRoom()) {
        dropped++;
        return;
    }
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const char* const tally = "qvp platform: complaints dropped because nobody took them: %u\n";
    if (dropped != 0 && dprintf(STDERR_FILENO, tally, dropped) > 0) dropped = 0;
    if (dprintf(STDERR_FILENO, "qvp platform: %s\n", text) < 0) dropped++;
}
