#include "time_zone/time_zone.h"

#include <stdlib.h>
#include <time.h>

#include "time_zone/zone_install.h"
#include "time_zone/zone_table.h"
#include "time_zone/zone_text.h"

int get_oem_timezone_id(int table, int id) {
    const TimeZone* zone = table == kTimezoneTable ? findTimeZone(id) : nullptr;
    return zone != nullptr ? zone->wireId : -1;
}

int get_real_timezone_id(int table, int wireId) {
    const TimeZone* zone = table == kTimezoneTable ? findTimeZoneOnWire(wireId) : nullptr;
    return zone != nullptr ? zone->id : -1;
}

int installTimeZone(const char* folder, int id, int mode, const TimezoneRule* rule) {
    char text[kZoneTextSize];
    const TimeZone* zone = findTimeZone(id);
    if (zone == nullptr || makeZoneText(zone->rule, mode, rule, text) != 0) return -1;
    return installZone(folder, text);
}

// A TZ of the environment would hide the new zone from this process and its commands. Some libraries read
// /etc/localtime again only after TZ has said something else.
static void followTheSystem() {
    setenv("TZ", "UTC0", 1);
    tzset();
    unsetenv("TZ");
    tzset();
}

int set_timezone(int, int id, int mode, const TimezoneRule* rule) {
    if (installTimeZone("/etc", id, mode, rule) != 0) return -1;
    followTheSystem();
    return 0;
}
