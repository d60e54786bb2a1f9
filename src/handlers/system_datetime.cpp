// The clock: local time, time zone, daylight saving and NTP, read and set.
#include "protocol/system_datetime.h"

#include <stdio.h>

#include "camera/pending_actions.h"
#include "camera/settings.h"
#include "handlers/commands.h"
#include "platform.h"
#include "protocol/result_codes.h"
#include "util/reply_fields.h"

static void getDatetime(const uint8_t*, uint8_t* reply) {
    DatetimeReply& out = view<DatetimeReply>(reply);
    putLocalTime(out.local_time);
    out.timezone = storedTimezone();
    out.daylight_saving = read(kDaylightSaving);
    out.ntp = read(kTimeProtocol) == kTimeProtocolNtp ? 1 : 0;
    putStoredText(out.ntp_server, kNtpServer);
}

struct WallTime {
    int year, month, day, hour, minute, second;
};

static bool isZero(const WallTime& time) {
    return (time.year | time.month | time.day | time.hour | time.minute | time.second) == 0;
}

static bool isBetween(int value, int least, int most) { return value >= least && value <= most; }

// Zero hours, minutes and seconds are refused: tools have always had to live with it.
static bool isSettable(const WallTime& time) {
    return isBetween(time.year, 1970, 2100) && isBetween(time.month, 1, 12) && isBetween(time.day, 1, 31) &&
           isBetween(time.hour, 1, 23) && isBetween(time.minute, 1, 59) && isBetween(time.second, 1, 59);
}

static bool parse(const DatetimeRequest& in, WallTime& time) {
    char text[sizeof in.local_time + 1];
    takeText(text, in.local_time);
    return sscanf(text, "%04d%02d%02d%02d%02d%02d", &time.year, &time.month, &time.day, &time.hour, &time.minute,
                  &time.second) == 6;
}

// The internal id behind the tools' number, or -1.
static int zoneOf(const DatetimeRequest& in) {
    uint16_t wireId = load(in.timezone);
    return wireId >= 256 ? -1 : get_real_timezone_id(kTimezoneTable, wireId);
}

static uint32_t check(const DatetimeRequest& in, WallTime& time, int& zone) {
    if (!parse(in, time) || !(isZero(time) || isSettable(time))) return kBadTime;
    zone = zoneOf(in);
    if (zone == -1) return kBadTimezone;
    if (in.daylight_saving >= 2) return kBadDaylightSaving;
    return in.ntp >= 2 ? kBadNtp : kAccepted;
}

static void handOver(const WallTime& time) {
    g_szDateTime[0] = '\0';
    if (isZero(time)) return;
    snprintf(g_szDateTime, sizeof g_szDateTime, "%04d/%02d/%02d %02d:%02d:%02d", time.year, time.month, time.day,
             time.hour, time.minute, time.second);
}

static void setDatetime(const uint8_t* request, uint8_t* reply) {
    const DatetimeRequest& in = view<DatetimeRequest>(request);
    WallTime time = {};
    int zone = 0;
    if (uint32_t why = check(in, time, zone); why != kAccepted) return refuse(reply, why);
    handOver(time);
    char server[kTextSize];
    takeLongText(server, request, in.ntp_server);
    write(kTimezone, zone);
    write(kDaylightSaving, in.daylight_saving);
    write(kTimeProtocol, in.ntp != 0 ? kTimeProtocolNtp : 0);
    write(kNtpServer, server);
    g_nResetTime = 1;
}

const Command kGetSystemDatetime{"get_system_datetime", Addressing::MacOnly, Protection::Protected,
                                 sizeof(DatetimeReply), getDatetime};
const Command kSetSystemDatetime{"set_system_datetime", Addressing::MacOnly, Protection::Protected,
                                 sizeof(SettingReply), setDatetime};
