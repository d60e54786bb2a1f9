// A clock of the camera's own. The kernel lets nobody in a user namespace set its clock, so this library, loaded into
// every program of a virtual camera, keeps the distance between the camera's time and the machine's in a file that
// those programs share. Monotonic clocks, timers and the times of files stay the machine's.
#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

static const int64_t kSecond = 1000000000;

static int64_t g_none;
static int64_t* g_offset = &g_none;  // nanoseconds, camera's time less the machine's

__attribute__((constructor)) static void mapOffset(void) {
    int file = open("/var/lib/clock", O_RDWR | O_CLOEXEC);
    if (file < 0) return;
    void* shared = mmap(NULL, sizeof *g_offset, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (shared != MAP_FAILED) g_offset = shared;
}

static int64_t nanoseconds(const struct timespec* t) { return (int64_t)t->tv_sec * kSecond + t->tv_nsec; }

int clock_gettime(clockid_t clock, struct timespec* now) {
    if (syscall(SYS_clock_gettime, clock, now) != 0) return -1;
    if (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE) return 0;
    int64_t time = nanoseconds(now) + __atomic_load_n(g_offset, __ATOMIC_RELAXED);
    int64_t rest = (time % kSecond + kSecond) % kSecond;
    now->tv_sec = (time - rest) / kSecond;
    now->tv_nsec = rest;
    return 0;
}

int clock_settime(clockid_t clock, const struct timespec* time) {
    if (clock != CLOCK_REALTIME) return (int)syscall(SYS_clock_settime, clock, time);
    if (time->tv_nsec < 0 || time->tv_nsec >= kSecond || time->tv_sec < 0 || time->tv_sec > INT64_MAX / kSecond / 2) {
        errno = EINVAL;
        return -1;
    }
    struct timespec machine;
    syscall(SYS_clock_gettime, CLOCK_REALTIME, &machine);
    __atomic_store_n(g_offset, nanoseconds(time) - nanoseconds(&machine), __ATOMIC_RELAXED);
    return 0;
}

time_t time(time_t* out) {
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    if (out) *out = now.tv_sec;
    return now.tv_sec;
}

int gettimeofday(struct timeval* restrict out, void* restrict zone) {
    struct timespec now;
    (void)zone;
    clock_gettime(CLOCK_REALTIME, &now);
    out->tv_sec = now.tv_sec;
    out->tv_usec = now.tv_nsec / 1000;
    return 0;
}

int settimeofday(const struct timeval* time, const struct timezone* zone) {
    (void)zone;
    if (!time) return 0;
    struct timespec to = {.tv_sec = time->tv_sec, .tv_nsec = time->tv_usec * 1000};
    return clock_settime(CLOCK_REALTIME, &to);
}
