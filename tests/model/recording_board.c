// A board that writes down what it is asked for instead of doing it, loaded into the daemon: the commands, the clock's
// settings and the long waits, one after the other, each with a NUL behind it. The clock stands still between them.
#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

static const int64_t kSecond = 1000000000;

static int64_t g_none;
static int64_t* g_seconds = &g_none;  // the board's time
static int64_t g_slept;               // nanoseconds that were not waited for

__attribute__((constructor)) static void mapTime(void) {
    int file = open("/var/lib/time", O_RDWR | O_CLOEXEC);
    if (file < 0) return;
    void* shared = mmap(NULL, sizeof *g_seconds, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (shared != MAP_FAILED) g_seconds = shared;
}

// Opened anew each time: the child that is to become a shell has closed what it inherited.
static void record(const char* kind, const char* text) {
    int file = open("/var/lib/record", O_WRONLY | O_APPEND | O_CLOEXEC);
    struct iovec parts[] = {{(void*)kind, strlen(kind)}, {(void*)text, strlen(text) + 1}};
    if (writev(file, parts, 2) < 0) _exit(99);
    close(file);
}

static void recordNumber(const char* kind, int64_t number) {
    char text[32];
    snprintf(text, sizeof text, "%lld", (long long)number);
    record(kind, text);
}

// In the child that would become the shell. Any other program is told by its name.
int execv(const char* path, char* const arguments[]) {
    int isShell = strcmp(path, "/bin/sh") == 0 && arguments[1] && strcmp(arguments[1], "-c") == 0 && arguments[2];
    record(isShell ? "run " : "execute ", isShell ? arguments[2] : path);
    _exit(isShell ? 0 : 1);
}

int execvp(const char* file, char* const arguments[]) { return execv(file, arguments); }

int system(const char* command) {
    if (!command) return 1;
    record("run ", command);
    return 0;
}

int clock_gettime(clockid_t clock, struct timespec* now) {
    if (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE) {
        *now = (struct timespec){.tv_sec = *g_seconds};
        return 0;
    }
    if (syscall(SYS_clock_gettime, clock, now) != 0) return -1;
    int64_t time = now->tv_sec * kSecond + now->tv_nsec + g_slept;
    *now = (struct timespec){.tv_sec = time / kSecond, .tv_nsec = time % kSecond};
    return 0;
}

time_t time(time_t* out) {
    if (out) *out = *g_seconds;
    return *g_seconds;
}

// As the kernel: no time before 1970.
int clock_settime(clockid_t clock, const struct timespec* time) {
    if (clock != CLOCK_REALTIME || time->tv_sec < 0 || time->tv_nsec < 0 || time->tv_nsec >= kSecond) {
        errno = EINVAL;
        return -1;
    }
    recordNumber("clock ", time->tv_sec);
    *g_seconds = time->tv_sec;
    return 0;
}

int clock_nanosleep(clockid_t clock, int flags, const struct timespec* request, struct timespec* rest) {
    struct timespec now = {0};
    (void)rest;
    if (flags & TIMER_ABSTIME) clock_gettime(clock, &now);
    int64_t wait = (request->tv_sec - now.tv_sec) * kSecond + request->tv_nsec - now.tv_nsec;
    recordNumber("wait ", (wait + kSecond / 2) / kSecond);
    g_slept += wait;
    return 0;
}

int nanosleep(const struct timespec* request, struct timespec* rest) {
    return clock_nanosleep(CLOCK_MONOTONIC, 0, request, rest);
}

// Reports come when a test asks for one, however long it takes.
int setitimer(__itimer_which_t timer, const struct itimerval* value, struct itimerval* before) {
    (void)timer, (void)value, (void)before;
    return 0;
}

unsigned sleep(unsigned seconds) {
    struct timespec request = {.tv_sec = seconds};
    clock_nanosleep(CLOCK_MONOTONIC, 0, &request, NULL);
    return 0;
}
