#include "common/kept_file.h"

#include <time.h>

#include "common/milliseconds.h"
#include "platform.h"

// File systems count the time of a change in ticks, some in steps of two seconds: a second change within one step
// leaves the same times. So a content is trusted only if it was read when no such change could come any more.
static constexpr int64_t kSettledAfter = 3000;

uint32_t requestNumber;

void requestBegins() {
    requestNumber++;
    if (requestNumber == 0) requestNumber = 1;
}

static bool isSameTime(const timespec& one, const timespec& other) {
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

static bool isSameState(const KeptFile& file, const struct stat& status) {
    const struct stat& known = file.status;
    return file.wasRead && known.st_ino == status.st_ino && known.st_dev == status.st_dev &&
           known.st_size == status.st_size && isSameTime(known.st_mtim, status.st_mtim) &&
           isSameTime(known.st_ctim, status.st_ctim);
}

static bool isSettled(const KeptFile& file) { return file.readAt - file.firstSeen >= kSettledAfter; }

bool isStillSame(KeptFile& file, const char* path) {
    struct stat status;
    if (!file.wasRead || !isSettled(file)) return false;
    if (stat(path, &status) != 0 || !isSameState(file, status)) return false;
    file.lookedAtIn = requestNumber;
    return true;
}

void noteRead(KeptFile& file, const struct stat& status, int64_t startedAt) {
    if (!isSameState(file, status)) file.firstSeen = millisecondsNow();
    file.wasRead = requestNumber != 0;
    file.status = status;
    file.readAt = startedAt;
    file.lookedAtIn = requestNumber;
}

void forget(KeptFile& file) { file = {}; }
