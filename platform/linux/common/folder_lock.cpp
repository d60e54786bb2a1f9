#include "common/folder_lock.h"

#include <errno.h>
#include <stdint.h>
#include <sys/file.h>
#include <time.h>

#include "common/kept_file.h"

static constexpr int kMostPauses = 500;
static constexpr long kPauseNs = 10'000'000;

static int pausesLeft;     // of the request below
static uint32_t waitedIn;  // the request that waited last

// False once the request has had its wait.
static bool pauseOnce() {
    const timespec pause = {0, kPauseNs};
    if (pausesLeft == 0) return false;
    pausesLeft--;
    nanosleep(&pause, nullptr);
    return true;
}

// Asks again and again: a wait inside flock could not be bounded.
int lockFolder(int descriptor) {
    if (requestNumber == 0 || waitedIn != requestNumber) pausesLeft = kMostPauses;
    waitedIn = requestNumber;
    do {
        if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return 0;
        if (errno != EWOULDBLOCK && errno != EINTR) return -1;
    } while (pauseOnce());
    errno = EWOULDBLOCK;
    return -1;
}
