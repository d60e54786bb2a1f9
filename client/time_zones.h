// The tools' numbers of time zones, by the names of the time-zone database.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace client {

struct TimeZone {
    uint16_t id;         // on the wire
    const char* name;    // in the time-zone database
    const char* places;  // those that people look for, with ", " between them
};

// West to east.
std::span<const TimeZone> timeZones();

const TimeZone* findTimeZone(uint16_t id);  // null: no zone has that number

// By its number, its name, or a city or a name of the database with a city that it has ("Europe/Vienna", "Etc/UTC"), in
// any case.
// Null: not known.
const TimeZone* parseTimeZone(std::string_view text);

// The local time of a moment, "YYYYMMDDhhmmss"; without `daylightSaving` the zone's standard time. Nothing for a zone
// that this machine's database does not have.
std::optional<std::string> localTimeIn(const TimeZone& zone, bool daylightSaving,
                                       std::chrono::system_clock::time_point moment);

}  // namespace client
