// Loaded into the tool by a test: lets time leap forward for it, so that nobody has to wait until a camera is taken for
// silent. The file LEAP_FILE holds the seconds, as eight bytes.
#define _GNU_SOURCE
#include <fcntl.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

static const int64_t kNone;
static const int64_t* g_seconds = &kNone;

__attribute__((constructor)) static void mapSeconds(void) {
    const char* name = getenv("LEAP_FILE");
    int file = name ? open(name, O_RDONLY | O_CLOEXEC) : -1;
    if (file < 0) return;
    void* shared = mmap(NULL, sizeof *g_seconds, PROT_READ, MAP_SHARED, file, 0);
    close(file);
    if (shared != MAP_FAILED) g_seconds = shared;
}

int clock_gettime(clockid_t clock, struct timespec* now) {
    if (syscall(SYS_clock_gettime, clock, now) != 0) return -1;
    now->tv_sec += (time_t)__atomic_load_n(g_seconds, __ATOMIC_RELAXED);
    return 0;
}
