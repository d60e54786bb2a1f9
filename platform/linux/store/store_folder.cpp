#include "store/store_folder.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

#include "common/folder_lock.h"
#include "common/slice.h"

static constexpr int kMostLinks = 16;
static constexpr Slice kNothing = {"", 0};

// Puts two texts one behind the other. Returns 0, or -1 with errno ENAMETOOLONG when they do not fit.
template <size_t Capacity>
static int join(char (&out)[Capacity], Slice first, const char* second) {
    const size_t length = strlen(second);
    if (first.length + length >= Capacity) {
        errno = ENAMETOOLONG;
        return -1;
    }
    memcpy(out, first.text, first.length);
    memcpy(out + first.length, second, length + 1);
    return 0;
}

// Up to the last slash, which it has.
static Slice folderOf(const char* path) {
    const char* const slash = strrchr(path, '/');
    return {path, slash != nullptr ? static_cast<size_t>(slash - path) + 1 : 0};
}

// `link` is a link's path and becomes the path that the link leads to; a relative target starts in the link's folder.
static int followLink(char (&link)[PATH_MAX], const char* target) {
    char path[PATH_MAX];
    const Slice folder = target[0] == '/' ? kNothing : folderOf(link);
    if (join(path, folder, target) != 0) return -1;
    return join(link, kNothing, path);
}

static int followLinks(char (&path)[PATH_MAX]) {
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
    const Slice parent = folderOf(path);
    const char* const file = path + parent.length;
    if (join(name, parent, "") != 0) return -1;
    if (join(folder.file, kNothing, file) != 0) return -1;
    if (join(folder.temporary, {file, strlen(file)}, ".new") != 0) return -1;
    folder.descriptor = open(name[0] != '\0' ? name : ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return folder.descriptor < 0 ? -1 : 0;
}

int lockStoreFolder(const char* path, StoreFolder& folder) {
    char followed[PATH_MAX];
    if (join(followed, kNothing, path) != 0) return -1;
    if (followLinks(followed) != 0 || openFolder(followed, folder) != 0) return -1;
    if (lockFolder(folder.descriptor) == 0) return 0;
    int reason = errno;
    close(folder.descriptor);
    errno = reason;
    return -1;
}
