#include "common/moved_clock.h"

#include <sys/stat.h>
#include <time.h>

#include "support/temporary_folder.h"

static int g_ahead = 0;

extern "C" int __real_clock_gettime(clockid_t clock, timespec* time);
extern "C" int __wrap_clock_gettime(clockid_t clock, timespec* time);
extern "C" int __wrap_clock_gettime(clockid_t clock, timespec* time) {
    const int result = __real_clock_gettime(clock, time);
    if (clock == CLOCK_MONOTONIC) time->tv_sec += g_ahead;
    return result;
}

void moveClock(int seconds) { g_ahead += seconds; }

static timespec changeTime(const std::filesystem::path& file) {
    struct stat status = {};
    stat(file.c_str(), &status);
    return status.st_ctim;
}

void awaitNextTick(const std::filesystem::path& file) {
    const timespec known = changeTime(file);
    const std::filesystem::path probe = file.string() + ".probe";
    timespec now;
    do {
        writeFile(probe, "");
        now = changeTime(probe);
        std::filesystem::remove(probe);
    } while (now.tv_sec == known.tv_sec && now.tv_nsec == known.tv_nsec);
}
