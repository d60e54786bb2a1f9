#include "time_zone/zone_install.h"

#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/complain.h"
#include "common/folder_lock.h"
#include "common/small_file.h"
#include "time_zone/zone_file.h"
#include "time_zone/zone_text.h"

static constexpr const char* kFile = "localtime";
static constexpr const char* kText = "TZ";
static constexpr const char* kNewFile = "localtime.qvp-new";
static constexpr const char* kNewText = "TZ.qvp-new";
static constexpr const char* kOldText = "TZ.qvp-old";

static int failed(const char* name) {
    complain("time zone: %s: %s", name, strerror(errno));
    return -1;
}

static int createFile(int folder, const char* name, const char* bytes, size_t length) {
    unlinkat(folder, name, 0);  // left by a power cut
    const int file = openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (file < 0) return failed(name);

    int result = 0;
    if (writeAll(file, bytes, length) != 0 || fchmod(file, 0644) != 0 || fsync(file) != 0) result = failed(name);
    if (close(file) != 0 && result == 0) result = failed(name);
    return result;
}

static int createBoth(int folder, const char* text) {
    uint8_t file[kZoneFileSize];
    const int length = makeZoneFile(text, file);
    if (length < 0 ||
        createFile(folder, kNewFile, reinterpret_cast<const char*>(file), static_cast<size_t>(length)) != 0)
        return -1;

    char line[kZoneTextSize + 1];
    const int lineLength = snprintf(line, sizeof line, "%s\n", text);
    return createFile(folder, kNewText, line, static_cast<size_t>(lineLength));
}

// The text goes first, with a second name for the old one to go back to: it is the less read of the two.
static int renameBoth(int folder) {
    unlinkat(folder, kOldText, 0);
    const bool hadText = linkat(folder, kText, folder, kOldText, 0) == 0;
    if (!hadText && errno != ENOENT) return failed(kText);
    if (renameat(folder, kNewText, folder, kText) != 0) return failed(kText);
    if (renameat(folder, kNewFile, folder, kFile) == 0) return 0;

    failed(kFile);
    if (hadText ? renameat(folder, kOldText, folder, kText) : unlinkat(folder, kText, 0)) failed(kText);
    return -1;
}

static int replaceBoth(int folder, const char* text) {
    const int result = createBoth(folder, text) == 0 ? renameBoth(folder) : -1;
    unlinkat(folder, kNewFile, 0);
    unlinkat(folder, kNewText, 0);
    unlinkat(folder, kOldText, 0);
    if (fsync(folder) != 0 && errno != EINVAL)  // EINVAL: a file system without it
        failed("fsync");
    return result;
}

int installZone(const char* folder, const char* text) {
    const int opened = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return failed(folder);
    const int result = lockFolder(opened) == 0 ? replaceBoth(opened, text) : failed(folder);
    close(opened);
    return result;
}
