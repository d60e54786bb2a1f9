// The table of time zones, and what installing one does to the files of the system.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <iterator>
#include <ostream>
#include <set>

#include "support/open_descriptors.h"
#include "support/temporary_folder.h"
#include "time_zone/time_zone.h"
#include "time_zone/tokyo_file.h"
#include "time_zone/zone_rows.h"
#include "time_zone/zone_table.h"

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr TimezoneRule kSomeRule = {60, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0};

TEST(TimeZoneTable, GivesBothNumbersOfEveryZone) {
    ASSERT_EQ(std::size(kZoneRows), 148u);
    EXPECT_EQ(timeZoneCount(), 148);
    for (const ZoneRow& row : kZoneRows) {
        EXPECT_EQ(get_oem_timezone_id(2, row.id), row.wireId);
        EXPECT_EQ(get_real_timezone_id(2, row.wireId), row.id);
    }
}

TEST(TimeZoneTable, HasNoOtherNumbers) {
    std::set<int> ids, wireIds;
    for (const ZoneRow& row : kZoneRows) ids.insert(row.id), wireIds.insert(row.wireId);
    for (int number = -70000; number <= 70000; number++) {
        EXPECT_EQ(get_oem_timezone_id(2, number) == -1, ids.count(number) == 0) << number;
        EXPECT_EQ(get_real_timezone_id(2, number) == -1, wireIds.count(number) == 0) << number;
    }
    for (int number : {INT_MIN, INT_MAX, INT_MIN + 10, 65536 * 2 + 10}) {
        EXPECT_EQ(get_oem_timezone_id(2, number), -1) << number;
        EXPECT_EQ(get_real_timezone_id(2, number), -1) << number;
    }
}

TEST(TimeZoneTable, IsTheSecondOne) {
    for (int table : {INT_MIN, -2, -1, 0, 1, 3, 258, INT_MAX}) {
        EXPECT_EQ(get_oem_timezone_id(table, 600), -1) << table;
        EXPECT_EQ(get_real_timezone_id(table, 60), -1) << table;
    }
}

TEST(TimeZoneTable, LabelsTellTheZonesApart) {
    std::set<std::string> labels;
    for (int row = 0; row < timeZoneCount(); row++) {
        EXPECT_TRUE(labels.insert(timeZoneAt(row)->label).second) << timeZoneAt(row)->label;
    }
    EXPECT_EQ(timeZoneAt(-1), nullptr);
    EXPECT_EQ(timeZoneAt(148), nullptr);
}

struct TextRow {
    int id, mode;
    TimezoneRule rule;
    const char* text;
};

static void PrintTo(const TextRow& row, std::ostream* out) {
    *out << "zone " << row.id << " mode " << row.mode << " " << row.text;
}

class InstalledText : public testing::TestWithParam<TextRow> {};

TEST_P(InstalledText, StandsInTzAndEndsTheZoneFile) {
    const TextRow& row = GetParam();
    TemporaryFolder folder;
    ASSERT_EQ(installTimeZone(folder.path().c_str(), row.id, row.mode, row.mode == 2 ? &row.rule : nullptr), 0);
    EXPECT_EQ(readFile(folder / "TZ"), row.text + "\n"s);
    const std::string file = readFile(folder / "localtime"), end = "\n"s + row.text + "\n";
    EXPECT_EQ(file.substr(file.size() - end.size()), end);
}

INSTANTIATE_TEST_SUITE_P(
    AllModes, InstalledText,
    testing::Values(
        // standard time only
        TextRow{10, 0, {}, "<-12>12"}, TextRow{380, 0, {}, "NST3:30"}, TextRow{530, 0, {}, "GMT0"},
        TextRow{600, 0, {}, "CET-1"}, TextRow{860, 0, {}, "<+0330>-3:30"}, TextRow{1450, 0, {}, "<+1245>-12:45"},
        // the zone's own rule
        TextRow{510, 1, {}, "UTC0"}, TextRow{600, 1, {}, "CET-1CEST,M3.5.0,M10.5.0/3"},
        TextRow{240, 1, {}, "EST5EDT,M3.2.0,M11.1.0"}, TextRow{1220, 1, {}, "JST-9"},
        TextRow{1450, 1, {}, "<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45"},
        // the user's rule
        TextRow{600, 2, {60, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0}, "CET-1<+02>-2,M3.5.0/2:00,M10.5.0/3:00"},
        TextRow{600, 2, {-60, 10, 5, 0, 2, 0, 3, 5, 0, 1, 0}, "CET-1<+00>-0,M10.5.0/2:00,M3.5.0/1:00"},
        TextRow{600, 2, {-90, 10, 5, 0, 2, 0, 3, 5, 0, 1, 0}, "CET-1<-0030>0:30,M10.5.0/2:00,M3.5.0/1:00"},
        TextRow{390, 2, {60, 10, 3, 0, 0, 0, 2, 3, 0, 0, 0}, "<-03>3<-02>2,M10.3.0/0:00,M2.3.0/0:00"},
        TextRow{990, 2, {45, 4, 1, 6, 23, 59, 9, 2, 1, 0, 1}, "IST-5:30<+0615>-6:15,M4.1.6/23:59,M9.2.1/0:01"},
        // the ends of every range
        TextRow{510, 2, {-1439, 1, 1, 0, 0, 0, 12, 5, 6, 24, 0}, "UTC0<-2359>23:59,M1.1.0/0:00,M12.5.6/24:00"},
        TextRow{510, 2, {1439, 12, 5, 6, 23, 59, 1, 1, 0, 0, 0}, "UTC0<+2359>-23:59,M12.5.6/23:59,M1.1.0/0:00"},
        TextRow{510, 2, {0, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0}, "UTC0<+00>-0,M3.5.0/2:00,M10.5.0/3:00"},
        TextRow{1480, 2, {599, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0}, "<+14>-14<+2359>-23:59,M3.5.0/2:00,M10.5.0/3:00"},
        TextRow{10, 2, {-719, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0}, "<-12>12<-2359>23:59,M3.5.0/2:00,M10.5.0/3:00"}));

TEST(InstallTimeZone, MakesTheFileByteForByte) {
    TemporaryFolder folder;
    ASSERT_EQ(installTimeZone(folder.path().c_str(), 1220, 1, nullptr), 0);
    EXPECT_EQ(readFile(folder / "localtime"), kTokyoFile);
    EXPECT_EQ(readFile(folder / "TZ"), "JST-9\n");
}

TEST(InstallTimeZone, NamesVersion3OnlyForHoursBeyondADay) {
    TemporaryFolder folder;
    for (const ZoneRow& row : kZoneRows) {
        ASSERT_EQ(installTimeZone(folder.path().c_str(), row.id, 1, nullptr), 0);
        const std::string file = readFile(folder / "localtime"),
                          magic = row.id == 460 || row.id == 730 ? "TZif3" : "TZif2";
        EXPECT_EQ(file.find(magic), 0u) << row.zoneinfo;
        EXPECT_NE(file.find(magic, 44), std::string::npos) << row.zoneinfo;
    }
}

struct RefusedRow {
    int id, mode;
    TimezoneRule rule;
};

static void PrintTo(const RefusedRow& row, std::ostream* out) {
    const TimezoneRule& rule = row.rule;
    *out << "zone " << row.id << " mode " << row.mode << " shift " << rule.shift_minutes;
    *out << " from " << rule.start_month << " " << rule.start_week << " " << rule.start_weekday;
    *out << " " << rule.start_hour << " " << rule.start_minute;
    *out << " to " << rule.stop_month << " " << rule.stop_week << " " << rule.stop_weekday;
    *out << " " << rule.stop_hour << " " << rule.stop_minute;
}

class Refused : public testing::TestWithParam<RefusedRow> {};

TEST_P(Refused, ChangesNothing) {
    const RefusedRow& row = GetParam();
    TemporaryFolder used, empty;
    writeFile(used / "localtime", "what\0was"s);
    writeFile(used / "TZ", "before");
    EXPECT_EQ(installTimeZone(used.path().c_str(), row.id, row.mode, &row.rule), -1);
    EXPECT_EQ(installTimeZone(empty.path().c_str(), row.id, row.mode, &row.rule), -1);

    EXPECT_EQ(readFile(used / "localtime"), "what\0was"s);
    EXPECT_EQ(readFile(used / "TZ"), "before");
    EXPECT_EQ(used.names(), (std::vector<std::string>{"TZ", "localtime"}));
    EXPECT_EQ(empty.names(), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(UnknownZones, Refused,
                         testing::Values(RefusedRow{0, 1, kSomeRule}, RefusedRow{-1, 1, kSomeRule},
                                         RefusedRow{60, 3, kSomeRule}, RefusedRow{5, 1, kSomeRule},
                                         RefusedRow{1490, 0, kSomeRule}, RefusedRow{65536 + 600, 1, kSomeRule},
                                         RefusedRow{INT_MAX, 2, kSomeRule}, RefusedRow{INT_MIN, 2, kSomeRule}));

INSTANTIATE_TEST_SUITE_P(UnknownModes, Refused,
                         testing::Values(RefusedRow{600, -1, kSomeRule}, RefusedRow{600, 3, kSomeRule},
                                         RefusedRow{600, 256, kSomeRule}, RefusedRow{600, INT_MAX, kSomeRule}));

static std::vector<RefusedRow> rulesWithOneBadNumber() {
    struct Bad {
        int32_t TimezoneRule::*number;
        std::vector<int32_t> values;
    };
    using Rule = TimezoneRule;
    const Bad bads[] = {
        {&Rule::shift_minutes, {-1440, 1440, INT_MIN, INT_MAX}}, {&Rule::start_month, {0, 13, -1, INT_MIN, INT_MAX}},
        {&Rule::start_week, {0, 6, -1, INT_MIN, INT_MAX}},       {&Rule::start_weekday, {-1, 7, INT_MIN, INT_MAX}},
        {&Rule::start_hour, {-1, 25, INT_MIN, INT_MAX}},         {&Rule::start_minute, {-1, 60, INT_MIN, INT_MAX}},
        {&Rule::stop_month, {0, 13, -1, INT_MIN, INT_MAX}},      {&Rule::stop_week, {0, 6, -1, INT_MIN, INT_MAX}},
        {&Rule::stop_weekday, {-1, 7, INT_MIN, INT_MAX}},        {&Rule::stop_hour, {-1, 25, INT_MIN, INT_MAX}},
        {&Rule::stop_minute, {-1, 60, INT_MIN, INT_MAX}},
    };
    std::vector<RefusedRow> rows;
    for (const Bad& bad : bads) {
        for (int32_t value : bad.values) {
            rows.push_back({510, 2, kSomeRule});
            rows.back().rule.*bad.number = value;
        }
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(BadNumbers, Refused, testing::ValuesIn(rulesWithOneBadNumber()));

INSTANTIATE_TEST_SUITE_P(BeyondTheDay, Refused,
                         testing::Values(RefusedRow{510, 2, {60, 3, 5, 0, 24, 1, 10, 5, 0, 3, 0}},
                                         RefusedRow{510, 2, {60, 3, 5, 0, 2, 0, 10, 5, 0, 24, 59}},
                                         RefusedRow{1480, 2, {600, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0}},
                                         RefusedRow{10, 2, {-720, 3, 5, 0, 2, 0, 10, 5, 0, 3, 0}}));

TEST(InstallTimeZone, NeedsARuleInTheUsersMode) {
    TemporaryFolder folder;
    EXPECT_EQ(installTimeZone(folder.path().c_str(), 600, 2, nullptr), -1);
    EXPECT_EQ(folder.names(), std::vector<std::string>{});
}

TEST(InstallTimeZone, ReplacesLinksAndNotTheirTargets) {
    TemporaryFolder folder, elsewhere;
    const char* names[] = {"localtime", "TZ", "localtime.qvp-new", "TZ.qvp-new", "TZ.qvp-old"};
    for (const char* name : names) {
        writeFile(elsewhere / name, "kept");
        fs::create_symlink(elsewhere / name, folder / name);
    }
    ASSERT_EQ(installTimeZone(folder.path().c_str(), 1220, 1, nullptr), 0);

    EXPECT_EQ(folder.names(), (std::vector<std::string>{"TZ", "localtime"}));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / "localtime")));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / "TZ")));
    EXPECT_EQ(readFile(folder / "localtime"), kTokyoFile);
    EXPECT_EQ(readFile(folder / "TZ"), "JST-9\n");
    for (const char* name : names) EXPECT_EQ(readFile(elsewhere / name), "kept") << name;
}

TEST(InstallTimeZone, LetsEverybodyReadTheFiles) {
    TemporaryFolder folder;
    const mode_t before = umask(077);
    EXPECT_EQ(installTimeZone(folder.path().c_str(), 1220, 1, nullptr), 0);
    umask(before);
    for (const char* name : {"localtime", "TZ"}) {
        struct stat status {};
        ASSERT_EQ(stat((folder / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0644u) << name;
    }
}

TEST(InstallTimeZone, LeavesNoDescriptorOpen) {
    TemporaryFolder folder;
    const long before = openDescriptors();
    EXPECT_EQ(installTimeZone(folder.path().c_str(), 1220, 1, nullptr), 0);
    fs::remove(folder / "localtime");
    fs::create_directories(folder / "localtime" / "in the way");
    EXPECT_EQ(installTimeZone(folder.path().c_str(), 1220, 1, nullptr), -1);
    EXPECT_EQ(openDescriptors(), before);
}
