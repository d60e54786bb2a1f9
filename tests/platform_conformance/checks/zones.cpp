#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "checks.h"
#include "platform.h"
#include "room.h"

static constexpr int kTable = 2;
static constexpr int kMostWireId = 255;
static constexpr int kMostInternalId = 20000;  // where the checks look for internal ids

static int countZones() {
    int count = 0;
    for (int wireId = 0; wireId <= kMostWireId; wireId++) {
        if (get_real_timezone_id(kTable, wireId) != -1) count++;
    }
    return count;
}

void checkOemTimezoneId(const Settings&) {
    for (int id = -1000; id <= kMostInternalId; id++) {
        const int wireId = get_oem_timezone_id(kTable, id);
        if (wireId == -1) continue;
        if (wireId < 0 || wireId > kMostWireId) fail("%d for the internal id %d is beyond a byte", wireId, id);
        const int back = get_real_timezone_id(kTable, wireId);
        if (wireId >= 0 && wireId <= kMostWireId && back != id)
            fail("internal id %d is wire id %d, but that is internal id %d", id, wireId, back);
    }
    const int ids[] = {INT_MIN, INT_MAX};
    for (int id : ids) {
        if (get_oem_timezone_id(kTable, id) != -1) fail("the internal id %d has a wire id", id);
    }
    note("%d zones", countZones());
}

void checkRealTimezoneId(const Settings&) {
    for (int wireId = 0; wireId <= kMostWireId; wireId++) {
        const int id = get_real_timezone_id(kTable, wireId);
        if (id == -1) continue;
        const int back = get_oem_timezone_id(kTable, id);
        if (back != wireId) fail("wire id %d is internal id %d, but that is wire id %d", wireId, id, back);
    }
    const int noWireIds[] = {INT_MIN, -1, 256, 65535, INT_MAX};
    for (int wireId : noWireIds) {
        if (get_real_timezone_id(kTable, wireId) != -1) fail("%d, which is no wire id, has an internal id", wireId);
    }
    if (countZones() == 0) fail("no wire id has a zone");
}

// Noon of 15 January and of 15 July 2026.
static constexpr time_t kWinter = 1768478400;
static constexpr time_t kSummer = 1784116800;

struct Offsets {
    long winter, summer;  // seconds
};

static bool operator==(const Offsets& left, const Offsets& right) {
    return left.winter == right.winter && left.summer == right.summer;
}

static long offsetAt(time_t when) {
    tm local = {};
    localtime_r(&when, &local);
    return local.tm_gmtoff;
}

static Offsets here() {
    tzset();
    return {offsetAt(kWinter), offsetAt(kSummer)};
}

int printOffsets() {
    const Offsets offsets = here();
    return printf("%ld %ld\n", offsets.winter, offsets.summer) > 0 ? 0 : 1;
}

// A program that starts now, and inherits no TZ.
static Offsets elsewhere() {
    Offsets offsets = {-1, -1};
    char path[512] = {};
    char command[600];
    if (readlink("/proc/self/exe", path, sizeof path - 1) < 0) return offsets;
    const char* emulator = getenv("QVP_EMULATOR");
    snprintf(command, sizeof command, "unset TZ; exec %s '%s' --offsets", emulator != nullptr ? emulator : "", path);
    FILE* output = popen(command, "r");
    if (output == nullptr) return offsets;
    if (fscanf(output, "%ld %ld", &offsets.winter, &offsets.summer) != 2) fail("cannot run %s", path);
    pclose(output);
    return offsets;
}

static void compareWithOthers(int id, int mode) {
    const Offsets mine = here();
    const Offsets others = elsewhere();
    if (mine == others) return;
    fail("zone %d, mode %d: this process is %ld and %ld seconds east in January and July, another one %ld and %ld", id,
         mode, mine.winter, mine.summer, others.winter, others.summer);
}

static void refuseUnknownZone() {
    int unknown = 1;
    while (get_oem_timezone_id(kTable, unknown) != -1) unknown++;
    const Offsets before = elsewhere();
    constexpr int modes[] = {kNoDaylightSaving, kDaylightSavingOfTheZone};
    for (int mode : modes) {
        if (set_timezone(0, unknown, mode, nullptr) != -1)
            fail("zone %d, which has no wire id, is not refused", unknown);
    }
    if (!(elsewhere() == before)) fail("a refused zone changes the one of the system");
}

// Sets one zone in the ways that need no rule. True when the library has the zone on this machine.
static bool setZone(int id, Offsets& standard) {
    constexpr int modes[] = {kDaylightSavingOfTheZone, kNoDaylightSaving};
    for (int mode : modes) {
        const Offsets before = elsewhere();
        const int result = set_timezone(0, id, mode, nullptr);
        if (result != 0 && result != -1) fail("zone %d, mode %d: returns %d", id, mode, result);
        if (result != 0 && !(elsewhere() == before)) fail("a refused zone changes the one of the system");
        if (result != 0) return false;
        compareWithOthers(id, mode);
    }
    standard = here();
    if (standard.winter != standard.summer) fail("zone %d: daylight saving though none was asked for", id);
    return true;
}

// An hour more from the last Sunday of March to the last of October.
static void setRule(int id, const Offsets& standard) {
    const TimezoneRule rule = {60, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0};
    const Offsets before = elsewhere();
    const int result = set_timezone(0, id, kDaylightSavingOfTheUser, &rule);
    if (result != 0 && result != -1) fail("zone %d by a rule: returns %d", id, result);
    if (result != 0 && !(elsewhere() == before)) return fail("a refused rule changes the zone of the system");
    if (result != 0) return note("a rule of the user's own is refused");
    const Offsets now = elsewhere();
    if (now.winter != standard.winter || now.summer != standard.summer + 3600)
        fail("zone %d: a rule with an hour from March to October gives %ld and %ld seconds in January and July", id,
             now.winter, now.summer);
    compareWithOthers(id, kDaylightSavingOfTheUser);
}

// The zone that the store has; without one what was set last stays.
static void setStoredZone() {
    int32_t id = 0;
    uint8_t daylightSaving = 0;
    if (cfgRead("DATETIME", "TimeZone", &id) != 0) return;
    cfgRead("DATETIME", "DayLightSaving", &daylightSaving);
    set_timezone(0, id, daylightSaving != 0 ? kDaylightSavingOfTheZone : kNoDaylightSaving, nullptr);
}

// The first zones and the last: all of them would take their time.
static bool isTried(int wireId, int tried) { return tried < 4 || wireId >= 120; }

void checkSetTimezone(const Settings& settings) {
    if (!settings.zone) return skip("it changes the zone of the system (--zone)");
    long offsets[2] = {LONG_MAX, LONG_MAX};
    int tried = 0;
    for (int wireId = 0; wireId <= kMostWireId && tried < 8; wireId++) {
        const int id = get_real_timezone_id(kTable, wireId);
        Offsets standard;
        if (id == -1 || !isTried(wireId, tried) || !setZone(id, standard)) continue;
        setRule(id, standard);
        offsets[tried == 0 ? 0 : 1] = standard.winter;
        tried++;
    }
    refuseUnknownZone();
    setStoredZone();
    if (tried == 0) return skip("no zone can be set on this machine");
    if (tried > 1 && offsets[0] == offsets[1]) fail("the first zone and the last have the same time");
    if (leavesDescriptors([] { set_timezone(0, get_real_timezone_id(kTable, 51), 0, nullptr); }))
        fail("leaves descriptors open");
}
