// The clock: local time, time zone, daylight saving, NTP.
#pragma once

#include <optional>
#include <string>

#include "client/login.h"

namespace client {

struct ClockState {
    std::optional<std::string> localTime;  // ISO 8601 without a zone; none when the camera's text is no date
    uint16_t timezone;                     // in the tools' numbering, 0 none
    bool daylightSaving;
    bool ntp;
    std::string ntpServer;
};

struct ClockChange {
    std::string localTime;  // "YYYYMMDDhhmmss"; empty leaves the clock alone
    uint16_t timezone;
    bool daylightSaving;
    bool ntp;
    std::string ntpServer;
};

constexpr size_t kLongestNtpServer = 63;  // of what a camera tells; it would take more

ClockState decodeClock(std::span<const uint8_t> reply);
std::vector<uint8_t> encodeClock(const Login& login, const ClockChange& change);

}  // namespace client
