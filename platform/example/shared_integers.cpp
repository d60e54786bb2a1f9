// A file a slot, decimal text inside, so that scripts and the camera's other programs can take part.
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform.h"
#include "small_file.h"

// Before there is a second thread: one may not read the environment while another changes it.
static const char* const kFolder = getenv("QVP_SYSINFO") != nullptr ? getenv("QVP_SYSINFO") : "/run/qvp-sysinfo";

static bool makePath(int slot, const char* ending, char (&path)[256]) {
    return slot >= 0 && snprintf(path, sizeof path, "%s/%d%s", kFolder, slot, ending) < static_cast<int>(sizeof path);
}

// Returns 0, or -1 with *value untouched: nobody has written the slot yet.
int SIReadInt(int slot, int* value) {
    char path[256];
    char text[32];
    char rest;
    int number;
    if (!makePath(slot, "", path) || readSmallFile(path, text, sizeof text) < 0) return -1;
    if (sscanf(text, "%d %c", &number, &rest) != 1) return -1;
    *value = number;
    return 0;
}

// Returns 0, or -1. The main thread and the upgrade worker call it, at the same time if it so happens: each writes a
// file of its own and renames it, so that a reader finds the old number or the new one.
int SIWriteInt(int slot, int value) {
    char path[256];
    char temporary[256];
    char ending[32];
    char text[16];
    snprintf(ending, sizeof ending, ".%ld", static_cast<long>(syscall(SYS_gettid)));
    if (!makePath(slot, "", path) || !makePath(slot, ending, temporary)) return -1;
    mkdir(kFolder, 0755);
    int descriptor = open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (descriptor < 0) return -1;
    snprintf(text, sizeof text, "%d\n", value);
    int result = writeAll(descriptor, text, strlen(text));
    close(descriptor);
    if (result == 0 && rename(temporary, path) == 0) return 0;
    unlink(temporary);
    return -1;
}
