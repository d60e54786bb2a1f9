// The zones a user can choose from, and the numbers they go by.
#pragma once

#include <stdint.h>

struct TimeZone {
    int16_t id;         // what the store keeps
    uint8_t wireId;     // what configuration tools send and show
    const char* rule;   // POSIX text: standard time and, where the zone has one, its daylight saving
    const char* label;  // places people look for
};

constexpr int kTimeZoneRuleSize = 64;  // room for the longest rule and its NUL

int timeZoneCount();
const TimeZone* timeZoneAt(int row);         // west to east, from 0; null past the end
const TimeZone* findTimeZone(int id);        // null: no such zone
const TimeZone* findTimeZoneOnWire(int id);  // null: no such zone
