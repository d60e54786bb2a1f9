// Time: clocks that a test sets, sleeps that take none.
#include <errno.h>
#include <signal.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>

#include "event_log.h"
#include "fake_platform.h"
#include "parts.h"

namespace fake {
namespace {

constexpr std::int64_t kSecond = 1000000000;

struct Clock {
    std::mutex mutex;
    std::optional<std::time_t> now;
    std::int64_t slept = 0;
    int sleepsToInterruption = 0;  // 0: none
    int signal = 0;
};

Clock g_clock;

std::int64_t nanoseconds(const timespec& time) { return time.tv_sec * kSecond + time.tv_nsec; }

timespec timespecOf(std::int64_t nanoseconds) {
    return {static_cast<time_t>(nanoseconds / kSecond), static_cast<long>(nanoseconds % kSecond)};
}

std::string seconds(std::int64_t nanoseconds) {
    const std::int64_t rest = nanoseconds % kSecond;
    return std::to_string(nanoseconds / kSecond) + (rest == 0 ? "" : "." + std::to_string(kSecond + rest).substr(1));
}

// Moves the clock; returns what is left of an interrupted sleep.
std::int64_t sleepFor(std::int64_t wanted) {
    appendEvent("sleep " + seconds(wanted));
    int signal = 0;
    {
        const std::lock_guard lock(g_clock.mutex);
        if (g_clock.sleepsToInterruption > 0 && --g_clock.sleepsToInterruption == 0) signal = g_clock.signal;
        g_clock.slept += signal == 0 ? wanted : wanted / 2;
    }
    if (signal == 0) return 0;
    raise(signal);
    return wanted - wanted / 2;
}

}  // namespace

void setTime(std::time_t now) { g_clock.now = now; }

std::int64_t slept() {
    const std::lock_guard lock(g_clock.mutex);
    return g_clock.slept;
}

void interruptSleep(int nth, int signal) {
    g_clock.sleepsToInterruption = nth;
    g_clock.signal = signal;
}

void resetClock() {
    g_clock.now.reset();
    g_clock.slept = 0;
    g_clock.sleepsToInterruption = 0;
}

}  // namespace fake

using namespace fake;

extern "C" {

time_t __real_time(time_t* out);
time_t __real_mktime(tm* fields);
int __real_clock_gettime(clockid_t clock, timespec* out);
int __real_usleep(useconds_t microseconds);

time_t __wrap_time(time_t* out) {
    const time_t now = g_clock.now ? *g_clock.now : __real_time(nullptr);
    if (out != nullptr) *out = now;
    return now;
}

time_t __wrap_mktime(tm* fields) { return callFails("mktime") ? -1 : __real_mktime(fields); }

int __wrap_clock_gettime(clockid_t clock, timespec* out) {
    if (clock == CLOCK_REALTIME && g_clock.now) {
        *out = {*g_clock.now, 0};
        return 0;
    }
    const int result = __real_clock_gettime(clock, out);
    if (result == 0 && clock == CLOCK_MONOTONIC) *out = timespecOf(nanoseconds(*out) + slept());
    return result;
}

int __wrap_clock_settime(clockid_t clock, const timespec* time) {
    appendEvent("clock_settime " + std::string(clock == CLOCK_REALTIME ? "" : "other clock ") +
                seconds(nanoseconds(*time)));
    return callFails("clock_settime") ? -1 : 0;
}

int __wrap_clock_nanosleep(clockid_t clock, int flags, const timespec* request, timespec* left) {
    std::int64_t wanted = nanoseconds(*request);
    if (flags == TIMER_ABSTIME) {
        timespec now;
        __wrap_clock_gettime(clock, &now);
        wanted -= nanoseconds(now);
    }
    if (wanted <= 0) return 0;
    const std::int64_t rest = sleepFor(wanted);
    if (rest == 0) return 0;
    if (flags != TIMER_ABSTIME && left != nullptr) *left = timespecOf(rest);
    return EINTR;
}

int __wrap_nanosleep(const timespec* request, timespec* left) {
    const int error = __wrap_clock_nanosleep(CLOCK_REALTIME, 0, request, left);
    errno = error;
    return error == 0 ? 0 : -1;
}

unsigned __wrap_sleep(unsigned wanted) {
    const std::int64_t rest = sleepFor(wanted * kSecond);
    return static_cast<unsigned>((rest + kSecond - 1) / kSecond);
}

// A short wait in a loop is real: whoever is waited for needs the time.
int __wrap_usleep(useconds_t microseconds) {
    appendEvent("usleep " + std::to_string(microseconds));
    return microseconds <= 1000 ? __real_usleep(microseconds) : 0;
}

int __wrap_setitimer(__itimer_which_t which, const itimerval* value, itimerval* old) {
    char text[96];
    std::snprintf(text, sizeof text, "setitimer %s first %lld.%06lld interval %lld.%06lld",
                  which == ITIMER_REAL ? "ITIMER_REAL" : "other", static_cast<long long>(value->it_value.tv_sec),
                  static_cast<long long>(value->it_value.tv_usec), static_cast<long long>(value->it_interval.tv_sec),
                  static_cast<long long>(value->it_interval.tv_usec));
    appendEvent(text);
    if (old != nullptr) *old = {};
    return 0;
}

}  // extern "C"
