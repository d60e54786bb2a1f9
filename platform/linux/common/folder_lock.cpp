#include "common/folder_lock.h"

#include <errno.h>
#include <sys/file.h>
#include <time.h>

static constexpr int kLockTries = 500;
static constexpr long kLockPauseNs = 10'000'000;

// Asks again and again: a wait inside flock could not be bounded.
int lockFolder(int descriptor) {
    const timespec pause = {0, kLockPauseNs};
    for (int attempt = 0; attempt < kLockTries; attempt++) {
        if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return 0;
        if (errno != EWOULDBLOCK && errno != EINTR) return -1;
        nanosleep(&pause, nullptr);
    }
    errno = EWOULDBLOCK;
    return -1;
}
