#include "common/complain.h"

#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

void complain(const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    dprintf(STDERR_FILENO, "qvp platform: %s\n", text);
}
