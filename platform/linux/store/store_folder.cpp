#include "store/store_folder.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

#include "common/folder_lock.h"

static constexpr int kMostLinks = 16;

// A print that did not fit.
static int check(int printed, size_t capacity) {
    if (printed >= 0 && static_cast<size_t>(printed) < capacity) return 0;
    errno = ENAMETOOLONG;
    return -1;
}

// `link` is a link's path and becomes the path that the link leads to; a relative target starts in the link's folder.
static int followLink(char link[PATH_MAX], const char* target) {
    char path[PATH_MAX];
    const char* slash = strrchr(link, '/');
    int folderLength = target[0] == '/' || slash == nullptr ? 0 : static_cast<int>(slash - link + 1);
    if (check(snprintf(path, sizeof path, "%.*s%s", folderLength, link, target), sizeof path) != 0) return -1;
    memcpy(link, path, strlen(path) + 1);
    return 0;
}

static int followLinks(char path[PATH_MAX]) {
    for (int link = 0; link < kMostLinks; link++) {
        char target[PATH_MAX];
        ssize_t length = readlink(path, target, sizeof target - 1);
        if (length < 0) return errno == EINVAL || errno == ENOENT ? 0 : -1;
        target[length] = '\0';
        if (followLink(path, target) != 0) return -1;
    }
    errno = ELOOP;
    return -1;
}

static int openFolder(const char* path, StoreFolder& folder) {
    char name[PATH_MAX];
    const char* slash = strrchr(path, '/');
    const char* file = slash != nullptr ? slash + 1 : path;
    if (check(snprintf(name, sizeof name, "%.*s", static_cast<int>(file - path), path), sizeof name) != 0) return -1;
    if (check(snprintf(folder.file, sizeof folder.file, "%s", file), sizeof folder.file) != 0) return -1;
    int printed = snprintf(folder.temporary, sizeof folder.temporary, "%s.new", file);
    if (check(printed, sizeof folder.temporary) != 0) return -1;
    folder.descriptor = open(name[0] != '\0' ? name : ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return folder.descriptor < 0 ? -1 : 0;
}

int lockStoreFolder(const char* path, StoreFolder& folder) {
    char followed[PATH_MAX];
    if (check(snprintf(followed, sizeof followed, "%s", path), sizeof followed) != 0) return -1;
    if (followLinks(followed) != 0 || openFolder(followed, folder) != 0) return -1;
    if (lockFolder(folder.descriptor) == 0) return 0;
    int reason = errno;
    close(folder.descriptor);
    errno = reason;
    return -1;
}
