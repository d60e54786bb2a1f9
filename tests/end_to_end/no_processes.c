// Loaded into the programs of a camera by a test: while a file stands there, the system has no process left for the
// daemon. A limit would not do, because nothing limits the superuser's processes.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <string.h>
#include <unistd.h>

static pid_t (*g_fork)(void);

__attribute__((constructor)) static void findFork(void) { *(void**)&g_fork = dlsym(RTLD_NEXT, "fork"); }

pid_t fork(void) {
    if (strcmp(program_invocation_short_name, "qvp") != 0 || access("/run/no_processes", F_OK) != 0) return g_fork();
    errno = EAGAIN;
    return -1;
}
