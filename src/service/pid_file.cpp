#include "service/pid_file.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "system/trace.h"

// Decimal on purpose, that is octal 01204: boards have come to expect that mode.
static constexpr mode_t kMode = 644;

struct Path {
    char text[PATH_MAX];
};

static void makePath(Path& path, const char* interfaceName) {
    snprintf(path.text, sizeof path.text, "/var/run/qvp-%s.pid", interfaceName);
}

int takePidFile(const char* interfaceName) {
    Path path;
    makePath(path, interfaceName);
    int file = open(path.text, O_WRONLY | O_CREAT | O_EXCL, kMode);
    if (file < 0) {
        if (errno == EEXIST) trace("Error!! qvp(%s) may be in running\n", interfaceName);
        return -1;
    }
    char id[16];
    snprintf(id, sizeof id, "%d", static_cast<int>(getpid()));
    ssize_t written = write(file, id, strlen(id));
    static_cast<void>(written);  // an empty pid file still keeps a second instance off
    close(file);
    return 0;
}

void removePidFile(const char* interfaceName) {
    Path path;
    makePath(path, interfaceName);
    unlink(path.text);
}
