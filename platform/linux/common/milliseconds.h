// Time that passes whatever happens to the clock.
#pragma once

#include <stdint.h>
#include <time.h>

inline int64_t millisecondsNow() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}
