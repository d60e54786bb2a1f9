// A variable that an operation fills: at an odd address, guarded on both sides.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "report.h"

constexpr size_t kLargestRoom = 22 * 1024;
constexpr size_t kGuard = 65;  // odd, in front and behind

struct Room {
    size_t size;
    uint8_t bytes[kGuard + kLargestRoom + kGuard];
};

// Returns the variable, each byte of it and of its guards `filling`.
void* prepare(Room& room, size_t size, uint8_t filling = 0xA5);

uint8_t* inside(Room& room);
bool isUntouched(const Room& room, uint8_t filling = 0xA5);

// Looks at what every operation with such a variable promises: the result is 0 with nothing written outside of it, or
// -1 with nothing written at all. `what` says what was asked. True when the variable has a value to look at.
bool holdsValue(const Room& room, int result, const char* what, uint8_t filling = 0xA5);

// Looks whether many calls leave descriptors open. An operation that writes beyond its variable is not called again.
int openDescriptors();
template <typename Call>
bool leavesDescriptors(Call call) {
    constexpr int kCalls = 40;
    constexpr int kKept = 8;  // a library may keep some
    if (hasFailed()) return false;
    const int before = openDescriptors();
    for (int round = 0; round < kCalls; round++) call();
    return openDescriptors() > before + kKept;
}
