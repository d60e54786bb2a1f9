// The zones of this board, from the zone files that it has. A C library that reads /etc/TZ instead wants the zone's
// text there, such as CET-1CEST,M3.5.0,M10.5.0/3.
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include "platform.h"

// The wire ids are those that configuration tools show names for, the internal ids this board's own affair.
struct Zone {
    int id, wireId;
    const char* file;
    const char* standardFile;  // the same without daylight saving; the sign of these names is the other way round
};
static constexpr Zone kZones[] = {
    {240,  24,  "America/New_York", "Etc/GMT+5"},
    {510,  51,  "Etc/UTC",          "Etc/UTC"  },
    {520,  52,  "Europe/London",    "Etc/GMT"  },
    {610,  61,  "Europe/Berlin",    "Etc/GMT-1"},
    {1220, 122, "Asia/Tokyo",       "Etc/GMT-9"},
};

// Returns the zone's number for tools, 0 to 255, or -1 for an internal id that no zone has.
int get_oem_timezone_id(int, int id) {
    for (const Zone& zone : kZones) {
        if (zone.id == id) return zone.wireId;
    }
    return -1;
}

// The way back. What gives -1 here is refused when a tool wants to set it.
int get_real_timezone_id(int, int wireId) {
    for (const Zone& zone : kZones) {
        if (zone.wireId == wireId) return zone.id;
    }
    return -1;
}

static int installZone(const char* file) {
    static constexpr char kInstalled[] = "/etc/localtime";
    static constexpr char kNew[] = "/etc/localtime.new";
    char path[64];
    snprintf(path, sizeof path, "/usr/share/zoneinfo/%s", file);
    unlink(kNew);
    if (access(path, R_OK) != 0 || symlink(path, kNew) != 0) return -1;
    if (rename(kNew, kInstalled) == 0) return 0;
    unlink(kNew);
    return -1;
}

// Returns 0 once every program sees the zone from its next tzset on, or -1 with the old one in force. A rule of the
// user's own (kDaylightSavingOfTheUser) has no file, and is refused.
int set_timezone(int, int id, int mode, const TimezoneRule*) {
    for (const Zone& zone : kZones) {
        if (zone.id != id || mode < kNoDaylightSaving || mode > kDaylightSavingOfTheZone) continue;
        if (installZone(mode == kNoDaylightSaving ? zone.standardFile : zone.file) != 0) return -1;
        setenv("TZ", "UTC0", 1);  // some libraries read the file again only after TZ has said something else
        tzset();
        unsetenv("TZ");
        tzset();
        return 0;
    }
    return -1;
}
