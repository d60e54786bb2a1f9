#include "shared_integers.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include "common/complain.h"
#include "common/numbers.h"
#include "common/small_file.h"
#include "platform.h"

static bool endsWord(char letter) { return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n'; }

// False when the slot cannot have a file.
static bool makePath(const char* folder, int slot, char path[PATH_MAX]) {
    return slot >= 0 && snprintf(path, PATH_MAX, "%s/%d", folder, slot) < PATH_MAX;
}

int readSharedInteger(const char* folder, int slot, int& value) {
    char path[PATH_MAX];
    char text[64];
    if (!makePath(folder, slot, path)) return -1;
    ssize_t length = readSmallFile(path, text, sizeof text);
    if (length == sizeof text - 1) return -1;
    while (length > 0 && endsWord(text[length - 1])) length--;
    int64_t number;
    if (length <= 0 || !parseDecimal(text, static_cast<size_t>(length), INT_MIN, INT_MAX, number)) return -1;
    value = static_cast<int>(number);
    return 0;
}

// Makes the folder and those above it; whether that went well shows when a file is put into it.
static void makeFolders(char* path) {
    for (char* slash = strchr(path + 1, '/'); slash != nullptr; slash = strchr(slash + 1, '/')) {
        *slash = '\0';
        mkdir(path, 0755);
        *slash = '/';
    }
}

static int writeFile(const char* path, const char* text) {
    int descriptor = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (descriptor < 0) return -1;
    int result = writeAll(descriptor, text, strlen(text));
    int reason = errno;
    if (close(descriptor) != 0 && result == 0) return -1;
    errno = reason;
    return result;
}

// A thread's own temporary file, renamed: whoever reads the slot sees the old number or the new one, never half of one.
static int replaceFile(const char* path, const char* text) {
    char temporary[PATH_MAX];
    long thread = syscall(SYS_gettid);
    if (snprintf(temporary, sizeof temporary, "%s.%ld.new", path, thread) >= static_cast<int>(sizeof temporary)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    if (writeFile(temporary, text) == 0 && rename(temporary, path) == 0) return 0;
    int reason = errno;
    unlink(temporary);
    errno = reason;
    return -1;
}

int writeSharedInteger(const char* folder, int slot, int value) {
    char path[PATH_MAX];
    char text[16];
    if (!makePath(folder, slot, path)) return -1;
    snprintf(text, sizeof text, "%d\n", value);
    makeFolders(path);
    if (replaceFile(path, text) == 0) return 0;
    complain("cannot write %s: %s", path, strerror(errno));
    return -1;
}

static const char* folderOfEnvironment() {
    const char* path = getenv("QVP_SYSINFO");
    return path != nullptr && path[0] != '\0' ? path : "/run/qvp/sysinfo";
}

// Looked up before there is a second thread: one thread may not read the environment while another sets the time zone.
static const char* const kFolder = folderOfEnvironment();

int SIReadInt(int slot, int* value) { return value != nullptr ? readSharedInteger(kFolder, slot, *value) : -1; }

int SIWriteInt(int slot, int value) { return writeSharedInteger(kFolder, slot, value); }
