#include "store/store_file.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/complain.h"
#include "common/kept_file.h"
#include "common/milliseconds.h"
#include "common/small_file.h"
#include "store/store_folder.h"

static constexpr int kMostAttempts = 16;

// The text that was read or written last, its values, and which file it was.
static IniText stored;
static StoredValues values;
static bool isTaken;
static KeptFile kept;

// A file in its state when it was read, to see whether it is still that.
struct FileState {
    bool exists;
    struct stat status;
};

static bool isSameState(const FileState& left, const FileState& right) {
    if (left.exists != right.exists) return false;
    if (!left.exists) return true;
    const struct stat& a = left.status;
    const struct stat& b = right.status;
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

const char* storePath() {
    const char* path = getenv("QVP_STORE");
    return path != nullptr && path[0] != '\0' ? path : "/etc/qvp/camera.ini";
}

static int closeKeepingErrno(int descriptor, int result) {
    int reason = errno;
    close(descriptor);
    errno = reason;
    return result;
}

static int readRegularFile(int descriptor, IniText& text, struct stat& status) {
    if (fstat(descriptor, &status) != 0) return -1;
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
        return -1;
    }
    return iniRead(descriptor, text);
}

static bool isSameText(const IniText& left, const IniText& right) {
    return left.length == right.length && memcmp(left.bytes, right.bytes, left.length) == 0;
}

static void copyText(const IniText& from, IniText& to) {
    memcpy(to.bytes, from.bytes, from.length);
    to.length = from.length;
}

// Mostly the text is the one that is known: it is taken apart once, not once a key.
static void takeText(const IniText& text) {
    if (isTaken && isSameText(stored, text)) return;
    copyText(text, stored);
    takeValues(stored, values);
    isTaken = true;
}

static int readStore() {
    struct stat status;
    IniText& text = iniScratch();
    const int64_t start = millisecondsNow();
    int descriptor = open(storePath(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return -1;
    if (closeKeepingErrno(descriptor, readRegularFile(descriptor, text, status)) != 0) return -1;
    takeText(text);
    noteRead(kept, status, start);
    return 0;
}

const StoredValues* storeLoad() {
    if (wasLookedAt(kept) || isStillSame(kept, storePath()) || readStore() == 0) return &values;
    forget(kept);
    return nullptr;
}

// A store that is not there yet is an empty one.
static int loadForChange(const StoreFolder& folder, IniText& text, FileState& state) {
    state = {};
    text.length = 0;
    int descriptor = openat(folder.descriptor, folder.file, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    if (descriptor < 0) return errno == ENOENT ? 0 : -1;
    state.exists = true;
    return closeKeepingErrno(descriptor, readRegularFile(descriptor, text, state.status));
}

static bool isUnchanged(const StoreFolder& folder, const FileState& before) {
    FileState now = {};
    now.exists = fstatat(folder.descriptor, folder.file, &now.status, AT_SYMLINK_NOFOLLOW) == 0;
    return isSameState(before, now);
}

// The new file is its owner's as the old one was; only the superuser can give a file away, so for others it stays
// theirs.
static int copyAttributes(int descriptor, const FileState& before) {
    if (!before.exists) return 0;
    if (before.status.st_uid != geteuid() || before.status.st_gid != getegid()) {
        static_cast<void>(!fchown(descriptor, before.status.st_uid, before.status.st_gid));
    }
    return fchmod(descriptor, before.status.st_mode & 07777);
}

// Its name is fixed, so one that a power cut left is not there for ever. It holds passwords: nobody else may read it.
static int writeTemporary(const StoreFolder& folder, const IniText& text, const FileState& before) {
    unlinkat(folder.descriptor, folder.temporary, 0);
    int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    int descriptor = openat(folder.descriptor, folder.temporary, flags, 0600);
    if (descriptor < 0) return -1;
    int result = copyAttributes(descriptor, before);
    if (result == 0) result = writeAll(descriptor, text.bytes, text.length);
    if (result == 0) result = fsync(descriptor);
    return closeKeepingErrno(descriptor, result);
}

// Puts the temporary file in the store's place. EAGAIN: the store is no longer what was read.
static int moveIntoPlace(const StoreFolder& folder, const FileState& before) {
    if (!isUnchanged(folder, before)) {
        errno = EAGAIN;
        return -1;
    }
    return renameat(folder.descriptor, folder.temporary, folder.descriptor, folder.file);
}

// Before it the old file may come back after a power cut. Some file systems have nothing to do for a folder.
static int syncFolder(int descriptor) { return fsync(descriptor) == 0 || errno == EINVAL ? 0 : -1; }

static int replaceFile(const StoreFolder& folder, const IniText& text, const FileState& before) {
    if (writeTemporary(folder, text, before) == 0 && moveIntoPlace(folder, before) == 0) {
        return syncFolder(folder.descriptor);
    }
    int reason = errno;
    unlinkat(folder.descriptor, folder.temporary, 0);
    errno = reason;
    return -1;
}

// The bytes may be there without being safe: an earlier sync failed, or somebody else wrote them without one.
static int makePermanent(const StoreFolder& folder) {
    int descriptor = openat(folder.descriptor, folder.file, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    if (descriptor < 0) return -1;
    int result = closeKeepingErrno(descriptor, fsync(descriptor));
    return result == 0 ? syncFolder(folder.descriptor) : result;
}

// Puts the value into the text, which is left in `changed`.
static int changeText(int key, const char* value, IniText& changed) {
    const Slice present = values.values[key].text;
    if (present.text != nullptr) return iniReplace(stored, present, value, changed);
    return iniAdd(stored, storeKey(key).section, storeKey(key).name, value, changed);
}

// Known at once if the text had the key; else the next look at the file takes it apart.
static void takeChangedText(int key, const char* value, const IniText& changed) {
    if (values.values[key].text.text == nullptr) return;
    copyText(changed, stored);
    takeNewValue(key, strlen(value), values);
}

static int changeOnce(const StoreFolder& folder, int key, const char* value) {
    FileState before;
    IniText& text = iniScratch();
    forget(kept);
    if (loadForChange(folder, text, before) != 0) return -1;
    takeText(text);
    IniText& changed = text;
    if (changeText(key, value, changed) != 0) return -1;
    if (isSameText(stored, changed)) return makePermanent(folder);
    if (replaceFile(folder, changed, before) != 0) return -1;
    takeChangedText(key, value, changed);
    return 0;
}

static uint32_t busyIn;  // the request that has waited in vain for another writer

static int change(int key, const char* value) {
    StoreFolder folder;
    if (lockStoreFolder(storePath(), folder) != 0) {
        if (errno == EWOULDBLOCK) {
            busyIn = requestNumber;
            forget(kept);  // meanwhile the other writer may have changed it
        }
        return -1;
    }
    int result = -1;
    for (int attempt = 0; attempt < kMostAttempts; attempt++) {
        result = changeOnce(folder, key, value);
        if (result == 0 || errno != EAGAIN) break;
    }
    return closeKeepingErrno(folder.descriptor, result);
}

// One wait a request is what the camera can be away for; what is left of the request has no better chance.
int storeSet(int key, const char* value) {
    if (busyIn != 0 && busyIn == requestNumber) return -1;
    if (change(key, value) == 0) return 0;
    const char* reason = errno == EAGAIN ? "another program keeps it busy" : strerror(errno);
    complain("cannot write %s/%s to %s: %s", storeKey(key).section, storeKey(key).name, storePath(), reason);
    return -1;
}
