#include "util/date_time.h"

#include <errno.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "camera/settings.h"
#include "platform.h"
#include "system/shell.h"
#include "system/signal_window.h"
#include "system/trace.h"

static constexpr char kWriteRealTimeClock[] = "/usr/sbin/rtcfg -w 2>/dev/null 1>/dev/null";
static constexpr char kTimeUpdate[] = "/usr/sbin/msger camsvr 0 ctimeupdate 0 1 2>/dev/null 1>/dev/null";
static constexpr char kStopNtpClient[] = "/etc/init.d/ntpc.sh stop 2>/dev/null 1>/dev/null";
static constexpr char kNtpState[] = "/usr/sbin/msger sinfo 0 sntpstate 0 0 2>/dev/null 1>/dev/null";
static constexpr char kStartNtpClient[] = "/etc/init.d/ntpc.sh start 2>/dev/null 1>/dev/null";
static constexpr int kNtpWaitSeconds = 8;

// One end of daylight saving, "M<month>.<week>.<weekday>/<hour>:<minute>:<second>".
struct RuleDate {
    int month, week, weekday, hour, minute;
};

// A text of the rule, as much of it as counts.
static void readRuleText(TextKey key, size_t most, char (&text)[kTextSize]) {
    read(key, text);
    text[most] = '\0';
}

// As far as it is one that fits.
static bool takeNumber(const char*& text, int32_t& number) {
    char* end;
    const long long value = strtoll(text, &end, 10);
    if (end == text || value < INT32_MIN || value > INT32_MAX) return false;
    text = end;
    number = static_cast<int32_t>(value);
    return true;
}

// "<sign><hours>:<minutes>".
static bool parseShift(const char* text, int32_t& minutes) {
    int32_t hours = 0;
    int32_t rest = 0;
    if (text[0] == '\0') return false;
    const char* at = text + 1;
    if (!takeNumber(at, hours) || *at++ != ':' || !takeNumber(at, rest)) return false;
    uint32_t shift = static_cast<uint32_t>(hours) * 60u + static_cast<uint32_t>(rest);
    minutes = static_cast<int32_t>(text[0] == '-' ? 0u - shift : shift);
    return true;
}

// "M<month>.<week>.<weekday>/<hour>:<minute>:<second>", and anything behind it.
static bool parseRuleDate(const char* text, RuleDate& date) {
    int32_t second = 0;
    int32_t* const numbers[] = {&date.month, &date.week, &date.weekday, &date.hour, &date.minute, &second};
    const char* mark = "M../::";
    for (int32_t* number : numbers) {
        if (*text++ != *mark++ || !takeNumber(text, *number)) return false;
    }
    return true;
}

static bool readRule(TimezoneRule& rule) {
    char offsetText[kTextSize];
    char startText[kTextSize];
    char stopText[kTextSize];
    RuleDate start;
    RuleDate stop;
    int32_t shift = 0;
    readRuleText(kDaylightSavingOffset, 15, offsetText);
    readRuleText(kDaylightSavingStart, 31, startText);
    readRuleText(kDaylightSavingStop, 31, stopText);
    if (!parseShift(offsetText, shift)) return false;
    if (!parseRuleDate(startText, start) || !parseRuleDate(stopText, stop)) return false;
    rule = {shift,      start.month, start.week,   start.weekday, start.hour, start.minute,
            stop.month, stop.week,   stop.weekday, stop.hour,     stop.minute};
    return true;
}

static bool applyTimezone(int32_t zone, bool daylightSaving) {
    if (!daylightSaving) {
        set_timezone(0, zone, kNoDaylightSaving, nullptr);
        return true;
    }
    if (read(kDaylightSavingAuto) != 0) {
        set_timezone(0, zone, kDaylightSavingOfTheZone, nullptr);
        return true;
    }
    TimezoneRule rule;
    if (!readRule(rule)) return false;
    set_timezone(0, zone, kDaylightSavingOfTheUser, &rule);
    return true;
}

// Waits to a fixed moment, so that no presence report in between shortens it.
static void waitForNtpClient() {
    timespec until;
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += kNtpWaitSeconds;
    openSignalWindow();
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) continue;
    closeSignalWindow();
}

static void followNtp() {
    trace("start ntpclient\n");
    shell(kStopNtpClient);
    shell(kNtpState);
    shell(kStartNtpClient);
    waitForNtpClient();
}

static void setByHand(const char* text) {
    trace("stop ntpclient\n");
    shell(kStopNtpClient);
    set_current_date_time(text);
    shell(kTimeUpdate);
}

void reset_datetime(const char* text) {
    if (text == nullptr) return;
    int32_t zone = read(kTimezone);
    bool daylightSaving = read(kDaylightSaving) != 0;
    bool ntp = read(kTimeProtocol) == kTimeProtocolNtp;
    if (!applyTimezone(zone, daylightSaving)) return;
    shell(kTimeUpdate);
    if (ntp) {
        followNtp();
    } else if (text[0] != '\0') {
        setByHand(text);
    }
}

// The number in `width` characters from `position`, as far as the text reaches.
static int numberAt(const char* text, size_t position, size_t width) {
    char digits[5] = {};
    if (position < strlen(text)) memcpy(digits, text + position, strnlen(text + position, width));
    return atoi(digits);
}

int set_current_date_time(const char* text) {
    tm local = {};
    local.tm_year = numberAt(text, 0, 4) - 1900;
    local.tm_mon = numberAt(text, 5, 2) - 1;
    local.tm_mday = numberAt(text, 8, 2);
    local.tm_hour = numberAt(text, 11, 2);
    local.tm_min = numberAt(text, 14, 2);
    local.tm_sec = numberAt(text, 17, 2);
    local.tm_isdst = -1;
    tzset();
    timespec now = {};
    now.tv_sec = mktime(&local);
    if (now.tv_sec == -1) return -1;
    if (clock_settime(CLOCK_REALTIME, &now) != 0) return -1;
    shell(kWriteRealTimeClock);
    shell(kTimeUpdate);
    return 0;
}
