// What clocks show once a zone is installed: fresh processes, the process itself, and two C libraries.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <set>

#include "support/child_process.h"
#include "support/temporary_folder.h"
#include "time_zone/clocks.h"
#include "time_zone/time_zone.h"
#include "time_zone/zone_rows.h"

namespace fs = std::filesystem;

constexpr int64_t kDay = 86400;

// The TZ that names a zone file.
static std::string zoneOf(const std::string& file) {
    std::string zone(1, ':');
    return zone += file;
}

// A change of the clocks in 2026, or the moment of one that the mode leaves out: the second before, and the change.
struct ChangeRow {
    int id, mode;
    TimezoneRule rule;
    const char *change, *before, *after;
};

static void PrintTo(const ChangeRow& row, std::ostream* out) {
    *out << "zone " << row.id << " mode " << row.mode << " shift " << row.rule.shift_minutes << " at " << row.change;
}

class ClockChange : public testing::TestWithParam<ChangeRow> {};

TEST_P(ClockChange, IsShownByAFreshProcess) {
    const ChangeRow& row = GetParam();
    TemporaryFolder folder;
    ASSERT_EQ(installTimeZone(folder.path().c_str(), row.id, row.mode, row.mode == 2 ? &row.rule : nullptr), 0);
    const int64_t change = utc(row.change);
    const std::vector<std::string> expected = {row.before, row.after};
    EXPECT_EQ(shownByDate(zoneOf(folder.path() + "/localtime"), {change - 1, change}), expected);
}

constexpr TimezoneRule kNone = {};
constexpr TimezoneRule kEurope = {60, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0};
constexpr TimezoneRule kWinterBack = {-60, 10, 5, 0, 2, 0, 3, 5, 0, 1, 0};
constexpr TimezoneRule kHalfSouth = {30, 10, 1, 0, 2, 0, 4, 1, 0, 3, 0};
constexpr TimezoneRule kBrazil = {60, 10, 3, 0, 0, 0, 2, 3, 0, 0, 0};
constexpr TimezoneRule kHourAndAHalf = {90, 5, 1, 5, 23, 30, 9, 2, 3, 1, 15};

static const ChangeRow kOwnRuleNorth[] = {
    {600, 1, kNone, "2026-03-29 01:00:00", "2026-03-29 01:59:59 +0100 CET", "2026-03-29 03:00:00 +0200 CEST"},
    {600, 1, kNone, "2026-10-25 01:00:00", "2026-10-25 02:59:59 +0200 CEST", "2026-10-25 02:00:00 +0100 CET"},
    {520, 1, kNone, "2026-03-29 01:00:00", "2026-03-29 00:59:59 +0000 GMT", "2026-03-29 02:00:00 +0100 BST"},
    {520, 1, kNone, "2026-10-25 01:00:00", "2026-10-25 01:59:59 +0100 BST", "2026-10-25 01:00:00 +0000 GMT"},
    {530, 1, kNone, "2026-03-29 01:00:00", "2026-03-29 00:59:59 +0000 GMT", "2026-03-29 02:00:00 +0100 IST"},
    {530, 1, kNone, "2026-10-25 01:00:00", "2026-10-25 01:59:59 +0100 IST", "2026-10-25 01:00:00 +0000 GMT"},
    {240, 1, kNone, "2026-03-08 07:00:00", "2026-03-08 01:59:59 -0500 EST", "2026-03-08 03:00:00 -0400 EDT"},
    {240, 1, kNone, "2026-11-01 06:00:00", "2026-11-01 01:59:59 -0400 EDT", "2026-11-01 01:00:00 -0500 EST"},
    {90, 1, kNone, "2026-03-08 10:00:00", "2026-03-08 01:59:59 -0800 PST", "2026-03-08 03:00:00 -0700 PDT"},
    {90, 1, kNone, "2026-11-01 09:00:00", "2026-11-01 01:59:59 -0700 PDT", "2026-11-01 01:00:00 -0800 PST"},
    {380, 1, kNone, "2026-03-08 05:30:00", "2026-03-08 01:59:59 -0330 NST", "2026-03-08 03:00:00 -0230 NDT"},
    {380, 1, kNone, "2026-11-01 04:30:00", "2026-11-01 01:59:59 -0230 NDT", "2026-11-01 01:00:00 -0330 NST"},
    {460, 1, kNone, "2026-03-29 01:00:00", "2026-03-28 22:59:59 -0200 -02", "2026-03-29 00:00:00 -0100 -01"},
    {460, 1, kNone, "2026-10-25 01:00:00", "2026-10-24 23:59:59 -0100 -01", "2026-10-24 23:00:00 -0200 -02"},
    {730, 1, kNone, "2026-03-27 00:00:00", "2026-03-27 01:59:59 +0200 IST", "2026-03-27 03:00:00 +0300 IDT"},
    {730, 1, kNone, "2026-10-24 23:00:00", "2026-10-25 01:59:59 +0300 IDT", "2026-10-25 01:00:00 +0200 IST"},
    {740, 1, kNone, "2026-04-23 22:00:00", "2026-04-23 23:59:59 +0200 EET", "2026-04-24 01:00:00 +0300 EEST"},
    {740, 1, kNone, "2026-10-29 21:00:00", "2026-10-29 23:59:59 +0300 EEST", "2026-10-29 23:00:00 +0200 EET"},
};

INSTANTIATE_TEST_SUITE_P(OwnRuleNorth, ClockChange, testing::ValuesIn(kOwnRuleNorth));

static const ChangeRow kOwnRuleSouth[] = {
    {1300, 1, kNone, "2026-04-04 16:00:00", "2026-04-05 02:59:59 +1100 AEDT", "2026-04-05 02:00:00 +1000 AEST"},
    {1300, 1, kNone, "2026-10-03 16:00:00", "2026-10-04 01:59:59 +1000 AEST", "2026-10-04 03:00:00 +1100 AEDT"},
    {1280, 1, kNone, "2026-04-04 16:30:00", "2026-04-05 02:59:59 +1030 ACDT", "2026-04-05 02:00:00 +0930 ACST"},
    {1280, 1, kNone, "2026-10-03 16:30:00", "2026-10-04 01:59:59 +0930 ACST", "2026-10-04 03:00:00 +1030 ACDT"},
    {1350, 1, kNone, "2026-04-04 15:00:00", "2026-04-05 01:59:59 +1100 +11", "2026-04-05 01:30:00 +1030 +1030"},
    {1350, 1, kNone, "2026-10-03 15:30:00", "2026-10-04 01:59:59 +1030 +1030", "2026-10-04 02:30:00 +1100 +11"},
    {1410, 1, kNone, "2026-04-04 14:00:00", "2026-04-05 02:59:59 +1300 NZDT", "2026-04-05 02:00:00 +1200 NZST"},
    {1410, 1, kNone, "2026-09-26 14:00:00", "2026-09-27 01:59:59 +1200 NZST", "2026-09-27 03:00:00 +1300 NZDT"},
    {1450, 1, kNone, "2026-04-04 14:00:00", "2026-04-05 03:44:59 +1345 +1345", "2026-04-05 02:45:00 +1245 +1245"},
    {1450, 1, kNone, "2026-09-26 14:00:00", "2026-09-27 02:44:59 +1245 +1245", "2026-09-27 03:45:00 +1345 +1345"},
    {370, 1, kNone, "2026-04-05 03:00:00", "2026-04-04 23:59:59 -0300 -03", "2026-04-04 23:00:00 -0400 -04"},
    {370, 1, kNone, "2026-09-06 04:00:00", "2026-09-05 23:59:59 -0400 -04", "2026-09-06 01:00:00 -0300 -03"},
};

INSTANTIATE_TEST_SUITE_P(OwnRuleSouth, ClockChange, testing::ValuesIn(kOwnRuleSouth));

static const ChangeRow kStandardTimeOnly[] = {
    {600, 0, kNone, "2026-03-29 01:00:00", "2026-03-29 01:59:59 +0100 CET", "2026-03-29 02:00:00 +0100 CET"},
    {600, 0, kNone, "2026-07-01 00:00:00", "2026-07-01 00:59:59 +0100 CET", "2026-07-01 01:00:00 +0100 CET"},
    {530, 0, kNone, "2026-07-01 00:00:00", "2026-06-30 23:59:59 +0000 GMT", "2026-07-01 00:00:00 +0000 GMT"},
    {240, 0, kNone, "2026-03-08 07:00:00", "2026-03-08 01:59:59 -0500 EST", "2026-03-08 02:00:00 -0500 EST"},
    {380, 0, kNone, "2026-07-01 00:00:00", "2026-06-30 20:29:59 -0330 NST", "2026-06-30 20:30:00 -0330 NST"},
    {1300, 0, kNone, "2026-10-03 16:00:00", "2026-10-04 01:59:59 +1000 AEST", "2026-10-04 02:00:00 +1000 AEST"},
    {1350, 0, kNone, "2026-01-01 00:00:00", "2026-01-01 10:29:59 +1030 +1030", "2026-01-01 10:30:00 +1030 +1030"},
    {1450, 0, kNone, "2026-01-01 00:00:00", "2026-01-01 12:44:59 +1245 +1245", "2026-01-01 12:45:00 +1245 +1245"},
    {370, 0, kNone, "2026-01-01 00:00:00", "2025-12-31 19:59:59 -0400 -04", "2025-12-31 20:00:00 -0400 -04"},
    {860, 0, kNone, "2026-07-01 00:00:00", "2026-07-01 03:29:59 +0330 +0330", "2026-07-01 03:30:00 +0330 +0330"},
};

INSTANTIATE_TEST_SUITE_P(StandardTimeOnly, ClockChange, testing::ValuesIn(kStandardTimeOnly));

static const ChangeRow kUsersRule[] = {
    {600, 2, kEurope, "2026-03-29 01:00:00", "2026-03-29 01:59:59 +0100 CET", "2026-03-29 03:00:00 +0200 +02"},
    {600, 2, kEurope, "2026-10-25 01:00:00", "2026-10-25 02:59:59 +0200 +02", "2026-10-25 02:00:00 +0100 CET"},
    {240, 2, kEurope, "2026-03-29 07:00:00", "2026-03-29 01:59:59 -0500 EST", "2026-03-29 03:00:00 -0400 -04"},
    {240, 2, kEurope, "2026-10-25 07:00:00", "2026-10-25 02:59:59 -0400 -04", "2026-10-25 02:00:00 -0500 EST"},
    {600, 2, kWinterBack, "2026-10-25 01:00:00", "2026-10-25 01:59:59 +0100 CET", "2026-10-25 01:00:00 +0000 +00"},
    {600, 2, kWinterBack, "2026-03-29 01:00:00", "2026-03-29 00:59:59 +0000 +00", "2026-03-29 02:00:00 +0100 CET"},
    {1290, 2, kHalfSouth, "2026-10-03 16:00:00", "2026-10-04 01:59:59 +1000 AEST", "2026-10-04 02:30:00 +1030 +1030"},
    {1290, 2, kHalfSouth, "2026-04-04 16:30:00", "2026-04-05 02:59:59 +1030 +1030", "2026-04-05 02:30:00 +1000 AEST"},
    {390, 2, kBrazil, "2026-10-18 03:00:00", "2026-10-17 23:59:59 -0300 -03", "2026-10-18 01:00:00 -0200 -02"},
    {390, 2, kBrazil, "2026-02-15 02:00:00", "2026-02-14 23:59:59 -0200 -02", "2026-02-14 23:00:00 -0300 -03"},
    {990, 2, kHourAndAHalf, "2026-05-01 18:00:00", "2026-05-01 23:29:59 +0530 IST", "2026-05-02 01:00:00 +0700 +07"},
    {990, 2, kHourAndAHalf, "2026-09-08 18:15:00", "2026-09-09 01:14:59 +0700 +07", "2026-09-08 23:45:00 +0530 IST"},
};

INSTANTIATE_TEST_SUITE_P(UsersRule, ClockChange, testing::ValuesIn(kUsersRule));

// The offset of this process's own clock, in the zone of a file.
static long offsetAt(const std::string& file, int64_t moment) {
    setenv("TZ", zoneOf(file).c_str(), 1);
    tzset();
    const time_t time = static_cast<time_t>(moment);
    return localtime(&time)->tm_gmtoff;
}

// Every fifth day of five years, and both sides of each change between them.
static std::set<int64_t> interestingMoments(const std::string& file) {
    std::set<int64_t> moments;
    const int64_t end = utc("2031-01-01 00:00:00");
    for (int64_t day = utc("2026-01-01 00:00:00"); day < end; day += 5 * kDay) {
        int64_t low = day, high = day + 5 * kDay;
        moments.insert(day);
        if (offsetAt(file, low) == offsetAt(file, high)) continue;
        while (high - low > 1) {
            const int64_t middle = low + (high - low) / 2;
            (offsetAt(file, middle) == offsetAt(file, low) ? low : high) = middle;
        }
        moments.insert({low, high});
    }
    return moments;
}

static std::vector<int64_t> interestingMoments(const std::string& file, const std::string& other) {
    std::set<int64_t> moments = interestingMoments(file);
    moments.merge(interestingMoments(other));
    unsetenv("TZ");
    tzset();
    return {moments.begin(), moments.end()};
}

class EveryZone : public testing::TestWithParam<ZoneRow> {};

TEST_P(EveryZone, AgreesWithTheZoneDatabaseAndAcrossLibraries) {
    const std::string reference = std::string("/usr/share/zoneinfo/") + GetParam().zoneinfo;
    ASSERT_TRUE(fs::exists(reference)) << "package tzdata";
    TemporaryFolder folder;
    ASSERT_EQ(installTimeZone(folder.path().c_str(), GetParam().id, 1, nullptr), 0);
    const std::string file = folder.path() + "/localtime";

    const auto moments = interestingMoments(file, reference);
    const auto shown = shownByDate(zoneOf(file), moments);
    EXPECT_EQ(shown, shownByDate(zoneOf(reference), moments));
#ifdef ZONE_PROBE
    EXPECT_EQ(shown, shownBy("TZ=" + zoneOf(file) + " " ZONE_PROBE, moments));
#endif
}

INSTANTIATE_TEST_SUITE_P(Table, EveryZone, testing::ValuesIn(kZoneRows));

TEST(InstalledZone, HoldsFromTheEpochOn) {
    TemporaryFolder folder;
    ASSERT_EQ(installTimeZone(folder.path().c_str(), 600, 1, nullptr), 0);
    const std::vector<int64_t> moments = {0, utc("1970-07-01 00:00:00"), utc("2037-12-31 00:00:00"), 4109878799,
                                          4109878800};
    const std::vector<std::string> expected = {"1970-01-01 01:00:00 +0100 CET", "1970-07-01 02:00:00 +0200 CEST",
                                               "2037-12-31 01:00:00 +0100 CET", "2100-03-28 01:59:59 +0100 CET",
                                               "2100-03-28 03:00:00 +0200 CEST"};
    EXPECT_EQ(shownByDate(zoneOf(folder.path() + "/localtime"), moments), expected);
#ifdef ZONE_PROBE
    EXPECT_EQ(shownBy("TZ=" + zoneOf(folder.path() + "/localtime") + " " ZONE_PROBE, moments), expected);
#endif
}

struct SystemRow {
    int id, mode;
    const TimezoneRule* rule;
    const char *text, *shown;  // at 2026-07-01 00:00:00 UTC
};

constexpr SystemRow kSystemRows[] = {
    {600, 1, nullptr, "CET-1CEST,M3.5.0,M10.5.0/3\n", "2026-07-01 02:00:00 +0200 CEST"},
    {600, 0, nullptr, "CET-1\n", "2026-07-01 01:00:00 +0100 CET"},
    {1220, 1, nullptr, "JST-9\n", "2026-07-01 09:00:00 +0900 JST"},
    {600, 2, &kEurope, "CET-1<+02>-2,M3.5.0/2:00,M10.5.0/3:00\n", "2026-07-01 02:00:00 +0200 +02"},
    {1300, 1, nullptr, "AEST-10AEDT,M10.1.0,M4.1.0/3\n", "2026-07-01 10:00:00 +1000 AEST"},
    {510, 1, nullptr, "UTC0\n", "2026-07-01 00:00:00 +0000 UTC"},
};

static void setEveryZoneOfTheSystem() {
    const int64_t moment = utc("2026-07-01 00:00:00");
    for (const SystemRow& row : kSystemRows) {
        ASSERT_EQ(set_timezone(0, row.id, row.mode, row.rule), 0);
        EXPECT_EQ(readFile("/etc/TZ"), row.text);
        EXPECT_EQ(shownByDate("", {moment}), std::vector<std::string>{row.shown});
        EXPECT_EQ(getenv("TZ"), nullptr);
        EXPECT_EQ(shownHere(moment), row.shown);
    }
    setenv("TZ", "JST-9", 1);
    EXPECT_EQ(set_timezone(0, 600, 2, nullptr), -1);
    EXPECT_STREQ(getenv("TZ"), "JST-9");
    EXPECT_EQ(readFile("/etc/TZ"), "UTC0\n");
}

TEST(SetTimezone, IsSeenByFreshProcessesAndByThisOneAtOnce) {
    for (const char* tz : {"", "JST-9", "UTC0", "America/New_York", ":/etc/localtime"}) {
        TemporaryFolder folder;
        const bool allowed = withPrivateEtc(folder.path(), [tz] {
            if (*tz != '\0') setenv("TZ", tz, 1);
            shownHere(0);
            setEveryZoneOfTheSystem();
        });
        if (!allowed) GTEST_SKIP() << "no mount namespaces here";
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"TZ", "localtime"}));
    }
}

#ifdef ZONE_PROBE
TEST(SetTimezone, IsSeenAtOnceWithTheOtherLibraryToo) {
    TemporaryFolder folder;
    const bool allowed = withPrivateEtc(folder.path(), [] {
        const std::vector<std::string> fromUtc = {"2026-07-01 00:00:00 +0000 UTC", "2026-07-01 02:00:00 +0200 CEST",
                                                  "none"};
        const std::vector<std::string> fromCest = {"2026-07-01 02:00:00 +0200 CEST", "2026-07-01 09:00:00 +0900 JST",
                                                   "none"};
        const std::vector<std::string> fromTz = {"2026-06-30 19:00:00 -0500 EST", "2026-07-01 02:00:00 +0200 CEST",
                                                 "none"};
        const std::vector<int64_t> lines(3, 0);
        ASSERT_EQ(set_timezone(0, 510, 1, nullptr), 0);
        EXPECT_EQ(shownBy("env -u TZ " ZONE_PROBE " 600 1 1782864000", lines), fromUtc);
        EXPECT_EQ(shownBy("env -u TZ " ZONE_PROBE " 1220 1 1782864000", lines), fromCest);
        EXPECT_EQ(shownBy("TZ=EST5 " ZONE_PROBE " 600 1 1782864000", lines), fromTz);
    });
    if (!allowed) GTEST_SKIP() << "no mount namespaces here";
}
#endif
