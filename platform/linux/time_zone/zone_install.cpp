#include "time_zone/zone_install.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include "common/complain.h"
#include "common/folder_lock.h"
#include "common/small_file.h"
#include "time_zone/zone_file.h"
#include "time_zone/zone_text.h"

static constexpr char kFile[] = "localtime";
static constexpr char kText[] = "TZ";
static constexpr char kNewFile[] = "localtime.qvp-new";
static constexpr char kNewText[] = "TZ.qvp-new";
static constexpr char kOldText[] = "TZ.qvp-old";

static constexpr int kMostOldText = 4096;  // more is no time zone's text

static int failed(const char* name) {
    complain("time zone: %s: %s", name, strerror(errno));
    return -1;
}

static int createFile(int folder, const char* name, mode_t mode, const char* bytes, size_t length) {
    unlinkat(folder, name, 0);  // left by a power cut
    int file = openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (file < 0) return failed(name);

    int result = 0;
    if (writeAll(file, bytes, length) != 0 || fchmod(file, mode) != 0 || fsync(file) != 0) result = failed(name);
    if (close(file) != 0 && result == 0) result = failed(name);
    return result;
}

static int createBoth(int folder, const char* text) {
    uint8_t file[kZoneFileSize];
    int length = makeZoneFile(text, file);
    if (length < 0) return -1;
    const char* bytes = reinterpret_cast<const char*>(file);
    if (createFile(folder, kNewFile, 0644, bytes, static_cast<size_t>(length)) != 0) return -1;

    char line[kZoneTextSize + 1];
    int lineLength = snprintf(line, sizeof line, "%s\n", text);
    return createFile(folder, kNewText, 0644, line, static_cast<size_t>(lineLength));
}

static int copyLink(int folder) {
    char target[PATH_MAX];
    ssize_t length = readlinkat(folder, kText, target, sizeof target - 1);
    if (length < 0) return failed(kText);
    target[length] = '\0';
    return symlinkat(target, folder, kOldText) == 0 ? 0 : failed(kOldText);
}

static int copyFile(int folder, mode_t mode) {
    char text[kMostOldText + 1];
    int file = openat(folder, kText, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) return failed(kText);
    ssize_t length = readUpTo(file, text, sizeof text);
    if (length > kMostOldText) errno = EFBIG;
    int result = length < 0 || length > kMostOldText ? failed(kText) : 0;
    close(file);
    return result == 0 ? createFile(folder, kOldText, mode, text, static_cast<size_t>(length)) : result;
}

// A copy of the old text to go back to; not every file system has a second name for a file.
static int keepOldText(int folder, bool& hadText) {
    struct stat status;
    unlinkat(folder, kOldText, 0);
    hadText = fstatat(folder, kText, &status, AT_SYMLINK_NOFOLLOW) == 0;
    if (!hadText) return errno == ENOENT ? 0 : failed(kText);
    if (S_ISLNK(status.st_mode)) {
        if (copyLink(folder) != 0) return -1;
    } else if (S_ISREG(status.st_mode)) {
        if (copyFile(folder, status.st_mode & 07777) != 0) return -1;
    } else {
        errno = S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
        return failed(kText);
    }
    // Only the superuser can give a file away.
    static_cast<void>(!fchownat(folder, kOldText, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW));
    return 0;
}

// The text goes first, as the less read of the two.
static int renameBoth(int folder) {
    bool hadText;
    if (keepOldText(folder, hadText) != 0) return -1;
    if (renameat(folder, kNewText, folder, kText) != 0) return failed(kText);
    if (renameat(folder, kNewFile, folder, kFile) == 0) return 0;

    failed(kFile);
    int undone = hadText ? renameat(folder, kOldText, folder, kText) : unlinkat(folder, kText, 0);
    if (undone != 0) failed(kText);
    return -1;
}

static int replaceBoth(int folder, const char* text) {
    int result = createBoth(folder, text) == 0 ? renameBoth(folder) : -1;
    unlinkat(folder, kNewFile, 0);
    unlinkat(folder, kNewText, 0);
    unlinkat(folder, kOldText, 0);
    if (fsync(folder) != 0 && errno != EINVAL) failed("fsync");  // EINVAL: a file system without it
    return result;
}

int installZone(const char* folder, const char* text) {
    int opened = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return failed(folder);
    int result = lockFolder(opened) == 0 ? replaceBoth(opened, text) : failed(folder);
    close(opened);
    return result;
}
