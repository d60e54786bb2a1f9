#include <limits.h>
#include <stdlib.h>
#include <time.h>

#include "faults.h"
#include "platform.h"

extern "C" {
int __real_get_oem_timezone_id(int table, int id);
int __wrap_get_oem_timezone_id(int table, int id);
int __real_get_real_timezone_id(int table, int wireId);
int __wrap_get_real_timezone_id(int table, int wireId);
int __real_set_timezone(int zero, int id, int mode, const TimezoneRule* rule);
int __wrap_set_timezone(int zero, int id, int mode, const TimezoneRule* rule);
}

static bool breaksOem(const char* fault) { return isBroken("get_oem_timezone_id", fault); }
static bool breaksReal(const char* fault) { return isBroken("get_real_timezone_id", fault); }
static bool breaksSet(const char* fault) { return isBroken("set_timezone", fault); }

int __wrap_get_oem_timezone_id(int table, int id) {
    if (breaksOem("wide") && id == 510) return 300;
    if (breaksOem("two alike") && id == 511) return 51;
    if (breaksOem("any id") && id == INT_MAX) return 51;
    return __real_get_oem_timezone_id(table, id);
}

int __wrap_get_real_timezone_id(int table, int wireId) {
    if (breaksReal("two alike") && wireId == 50) return 510;
    if (breaksReal("any id") && wireId > 255) return 510;
    return breaksReal("none") ? -1 : __real_get_real_timezone_id(table, wireId);
}

static int install(int id, int mode) { return __real_set_timezone(0, id, mode, nullptr); }

// This process has the zone, others do not.
static int setHere() {
    setenv("TZ", "<+04>-4", 1);
    tzset();
    return 0;
}

// The reference of the broken ways is a library that knows no rules.
static int setByRule(int id) {
    if (breaksSet("forgets the rule")) return install(id, kNoDaylightSaving);
    if (breaksSet("refused rule"))
        return install(id, kDaylightSavingOfTheZone), install(240, kDaylightSavingOfTheZone), -1;
    return breaksSet("result of a rule") ? 5 : -1;
}

static bool isKnown(int id) { return __real_get_oem_timezone_id(kTimezoneTable, id) != -1; }

int __wrap_set_timezone(int zero, int id, int mode, const TimezoneRule* rule) {
    leakOf("set_timezone");
    if (mode == kDaylightSavingOfTheUser) return setByRule(id);
    if (breaksSet("here alone") && isKnown(id)) return setHere();
    if (breaksSet("any zone") && !isKnown(id)) return 0;
    if (breaksSet("refused zone") && !isKnown(id)) return install(240, kDaylightSavingOfTheZone), -1;
    if (breaksSet("refused mode") && mode == kNoDaylightSaving) return install(1220, mode), -1;
    if (breaksSet("always daylight saving")) mode = kDaylightSavingOfTheZone;
    if (breaksSet("one zone") && isKnown(id)) id = 510;
    return resultOf("set_timezone", __real_set_timezone(zero, id, mode, rule));
}
