// Loaded into the daemon by a test: sends it a signal right before it waits for a datagram, as late as a signal can
// come that the test of the stop flag has missed.
#include <signal.h>
#include <stdlib.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

static const struct itimerval kNever;

static void stopAtTheChosenWait(void) {
    static int waits;
    const char* chosen = getenv("STOP_AT_WAIT");
    const char* number = getenv("STOP_SIGNAL");
    if (!chosen || !number || ++waits != atoi(chosen)) return;
    // The daemon's timer would end a wait that the stop has not ended.
    setitimer(ITIMER_REAL, &kNever, NULL);
    kill(getpid(), atoi(number));
}

int pselect(int count, fd_set* restrict read, fd_set* restrict write, fd_set* restrict except,
            const struct timespec* restrict timeout, const sigset_t* restrict mask) {
    struct timespec copy = timeout ? *timeout : (struct timespec){0, 0};
    struct {
        const sigset_t* mask;
        size_t size;
    } open = {mask, 8};
    stopAtTheChosenWait();
    return (int)syscall(SYS_pselect6, count, read, write, except, timeout ? &copy : NULL, &open);
}

int select(int count, fd_set* restrict read, fd_set* restrict write, fd_set* restrict except,
           struct timeval* restrict timeout) {
    struct timespec copy = {0, 0};
    if (timeout) copy = (struct timespec){timeout->tv_sec, timeout->tv_usec * 1000};
    stopAtTheChosenWait();
    return (int)syscall(SYS_pselect6, count, read, write, except, timeout ? &copy : NULL, NULL);
}
