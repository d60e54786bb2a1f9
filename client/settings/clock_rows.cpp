// The clock.
#include <cstdio>
#include <ctime>

#include "client/settings/rows.h"
#include "client/text.h"
#include "client/time_zones.h"

namespace client {

static std::string getZone(const CameraState& state) {
    const uint16_t id = state.clock->timezone;
    const TimeZone* zone = findTimeZone(id);
    return zone != nullptr ? zone->name : id == 0 ? "unknown" : std::to_string(id);
}

static void setZone(CameraState& wanted, const std::string& text) {
    if (const TimeZone* zone = parseTimeZone(text)) {
        wanted.clock->timezone = zone->id;
        return;
    }
    throw badValue("is no time zone that cameras know; 'qvpctl help time-zones' lists them");
}

static std::vector<std::string> zones() {
    std::vector<std::string> names;
    for (const TimeZone& zone : timeZones()) names.emplace_back(zone.name);
    return names;
}

static std::string getDaylightSaving(const CameraState& state) { return onOff(state.clock->daylightSaving); }

static void setDaylightSaving(CameraState& wanted, const std::string& text) {
    wanted.clock->daylightSaving = parseOnOff(text);
}

static std::string getNtp(const CameraState& state) { return state.clock->ntp ? state.clock->ntpServer : "off"; }

static void setNtp(CameraState& wanted, const std::string& text) {
    wanted.clock->ntp = text != "off";
    if (text == "off") return;
    if (text.empty()) throw badValue("must be a server's name or address, or 'off'");
    checkLength(text, kLongestNtpServer);
    wanted.clock->ntpServer = text;
}

static std::string getNow(const CameraState& state) { return state.clock->localTime.value_or(""); }

// "2026-01-31T10:20:30", with a blank for the T, or without the seconds.
static std::string digitsOf(const std::string& text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    std::string full = text.size() == kForm.size() - 3 ? text + ":01" : text;
    if (full.size() == kForm.size() && full[10] == ' ') full[10] = 'T';
    std::string digits;
    for (size_t i = 0; i < kForm.size(); i++) {
        const bool isDigit = i < full.size() && full[i] >= '0' && full[i] <= '9';
        const bool fits = full.size() == kForm.size() && (kForm[i] == '0' ? isDigit : full[i] == kForm[i]);
        if (!fits) throw badValue("must be 'now', or a time such as 2026-01-31T10:20:30");
        if (isDigit) digits += full[i];
    }
    return digits;
}

// A local time as if it were of a zone without shifts; nothing for a text that is none, such as of 31 February.
std::optional<time_t> momentOf(const std::string& digits) {
    tm parts{};
    if (sscanf(digits.c_str(), "%4d%2d%2d%2d%2d%2d", &parts.tm_year, &parts.tm_mon, &parts.tm_mday, &parts.tm_hour,
               &parts.tm_min, &parts.tm_sec) != 6) {
        return std::nullopt;
    }
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    const time_t moment = timegm(&parts);
    return digitsOfMoment(moment) == digits ? std::optional(moment) : std::nullopt;
}

std::string digitsOfMoment(time_t moment) {
    tm parts{};
    char digits[64];
    gmtime_r(&moment, &parts);
    strftime(digits, sizeof digits, "%Y%m%d%H%M%S", &parts);
    return digits;
}

static bool isTaken(const std::string& digits) {
    const std::string_view year = std::string_view(digits).substr(0, 4);
    return year >= "1970" && year <= "2100" && digits.substr(8, 2) != "00" && digits.substr(10, 2) != "00" &&
           digits.substr(12, 2) != "00";
}

static std::string nearestTaken(time_t moment) {
    for (time_t away = 1;; away++) {
        for (const time_t other : {moment - away, moment + away}) {
            if (isTaken(digitsOfMoment(other))) return *isoTime(digitsOfMoment(other));
        }
    }
}

void checkTimeToSet(const std::string& digits) {
    const auto moment = momentOf(digits);
    if (!moment) throw badValue("is no time of the calendar");
    if (digits < "1970" || digits.substr(0, 4) > "2100") throw badValue("has a year outside 1970 to 2100");
    if (isTaken(digits)) return;
    throw badValue("has an hour, minute or second of 0, which cameras refuse; the nearest is " + nearestTaken(*moment));
}

static void setNow(CameraState& wanted, const std::string& text) {
    wanted.timeToSet = text == "now" ? text : digitsOf(text);
    if (text != "now") checkTimeToSet(wanted.timeToSet);
    wanted.clock->localTime = text == "now" ? text : isoTime(wanted.timeToSet);
}

static constexpr Setting kClockRows[] = {
    {.key = "time.zone",
     .group = Group::Clock,
     .summary = "its time zone",
     .values = "a name such as Europe/Berlin, or a number",
     .quirk = "",
     .choices = zones,
     .get = getZone,
     .set = setZone},
    {.key = "time.daylight-saving",
     .group = Group::Clock,
     .summary = "whether it follows daylight saving time",
     .values = "on or off",
     .quirk = "",
     .choices = onOffChoices,
     .get = getDaylightSaving,
     .set = setDaylightSaving},
    {.key = "time.ntp",
     .group = Group::Clock,
     .summary = "the time server it follows",
     .values = "a name or address of at most 63 bytes, or off",
     .quirk = "the camera is busy for 8 s after the change",
     .get = getNtp,
     .set = setNtp},
    {.key = "time.now",
     .group = Group::Clock,
     .summary = "its local time",
     .values = "now (this machine's time), or such as 2026-01-31T10:20:30",
     .quirk = "not while the camera follows a time server; cameras take no time whose hour, minute or second is 0, so "
              "none in the hour after midnight",             .get = getNow,
     .set = setNow            },
};

std::span<const Setting> clockRows() { return kClockRows; }

}  // namespace client
