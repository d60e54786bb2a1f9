#include "time_zone/zone_text.h"

#include <stdio.h>
#include <stdlib.h>

static constexpr int kMinutesADay = 24 * 60;

static bool within(int value, int low, int high) { return value >= low && value <= high; }

static bool isChange(int month, int week, int weekday, int hour, int minute) {
    return within(month, 1, 12) && within(week, 1, 5) && within(weekday, 0, 6) && within(minute, 0, 59) &&
           (within(hour, 0, 23) || (hour == 24 && minute == 0));
}

static bool isDaylightSaving(const TimezoneRule* rule) {
    return within(rule->shift_minutes, 1 - kMinutesADay, kMinutesADay - 1) &&
           isChange(rule->start_month, rule->start_week, rule->start_weekday, rule->start_hour, rule->start_minute) &&
           isChange(rule->stop_month, rule->stop_week, rule->stop_weekday, rule->stop_hour, rule->stop_minute);
}

// The abbreviation is the offset itself, "<+0930>-9:30": a name such as CEST would lie about an unusual shift.
static int putDaylightTime(char* text, size_t size, int eastMinutes) {
    int hours = abs(eastMinutes) / 60;
    int minutes = abs(eastMinutes) % 60;
    bool west = eastMinutes < 0;
    if (minutes == 0) return snprintf(text, size, "<%c%02d>%s%d", west ? '-' : '+', hours, west ? "" : "-", hours);
    return snprintf(text, size, "<%c%02d%02d>%s%d:%02d", west ? '-' : '+', hours, minutes, west ? "" : "-", hours,
                    minutes);
}

static int makeUsersText(const char* rule, const TimezoneRule* daylight, char text[kZoneTextSize]) {
    if (daylight == nullptr || !isDaylightSaving(daylight)) return -1;

    StandardTime standard = readStandardTime(rule);
    int east = standard.offset / 60 + daylight->shift_minutes;
    if (!within(east, 1 - kMinutesADay, kMinutesADay - 1)) return -1;

    char daylightTime[24];
    putDaylightTime(daylightTime, sizeof daylightTime, east);
    snprintf(text, kZoneTextSize, "%.*s%s,M%d.%d.%d/%d:%02d,M%d.%d.%d/%d:%02d", standard.textLength, rule, daylightTime,
             daylight->start_month, daylight->start_week, daylight->start_weekday, daylight->start_hour,
             daylight->start_minute, daylight->stop_month, daylight->stop_week, daylight->stop_weekday,
             daylight->stop_hour, daylight->stop_minute);
    return 0;
}

int makeZoneText(const char* rule, int mode, const TimezoneRule* daylight, char text[kZoneTextSize]) {
    switch (mode) {
        case kNoDaylightSaving:
            snprintf(text, kZoneTextSize, "%.*s", readStandardTime(rule).textLength, rule);
            return 0;
        case kDaylightSavingOfTheZone:
            snprintf(text, kZoneTextSize, "%s", rule);
            return 0;
        case kDaylightSavingOfTheUser:
            return makeUsersText(rule, daylight, text);
        default:
            return -1;
    }
}
