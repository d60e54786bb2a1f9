#include "common/complain.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

// What has room takes a line of this length: a pipe has a page free then.
static bool hasRoom(int descriptor) {
    pollfd output = {descriptor, POLLOUT, 0};
    return poll(&output, 1, 0) > 0;
}

// A terminal that stands still may have room for a part of a line. It is opened anew, as O_NONBLOCK would be
// everybody's who has it as well.
static int openOutput() {
    const int terminal =
        isatty(STDERR_FILENO) != 0 ? open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC) : -1;
    return terminal >= 0 ? terminal : STDERR_FILENO;
}

static bool tell(int output, unsigned& dropped, const char* text) {
    if (!hasRoom(output)) return false;
    const char* const tally = "qvp platform: complaints dropped because nobody took them: %u\n";
    if (dropped != 0 && dprintf(output, tally, dropped) > 0) dropped = 0;
    return dprintf(output, "qvp platform: %s\n", text) > 0;
}

void complain(const char* format, ...) {
    static unsigned dropped;
    const int reason = errno;  // the caller's
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const int output = openOutput();
    if (!tell(output, dropped, text)) dropped++;
    if (output != STDERR_FILENO) close(output);
    errno = reason;
}
