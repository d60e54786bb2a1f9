#include "client/time_zones.h"

#include <gtest/gtest.h>

#include <set>

using namespace client;

static uint16_t idOf(std::string_view text) {
    const TimeZone* zone = parseTimeZone(text);
    return zone != nullptr ? zone->id : 0;
}

TEST(TimeZones, AreFoundByNumber) {
    EXPECT_STREQ(findTimeZone(24)->name, "America/New_York");
    EXPECT_EQ(idOf("24"), 24);
    EXPECT_EQ(idOf("148"), 148);
    for (const char* text : {"0", "149", "65560", "-24", "+24", "24.0", " 24", "99999999999"}) {
        EXPECT_EQ(idOf(text), 0) << text;
    }
}

TEST(TimeZones, AreFoundByNameOrCityInAnyCase) {
    const std::pair<const char*, uint16_t> rows[] = {
        {"Asia/Tokyo", 122},          {"asia/tokyo", 122}, {"ASIA/TOKYO", 122}, {"Tokyo", 122},
        {"Asia/Osaka", 122},          {"osaka", 122},      {"San Jose", 20},    {"America/San_Jose", 20},
        {"America/New_York", 24},     {"new york", 24},    {"St. John's", 38},  {"America/St_Johns", 38},
        {"Australia/Melbourne", 130}, {"UTC", 51},         {"Etc/UTC", 51},     {"regina", 21},
    };
    for (const auto& [text, id] : rows) EXPECT_EQ(idOf(text), id) << text;
}

TEST(TimeZones, UnknownOnesAreNotFound) {
    for (const char* text : {"", "Mars/Olympus_Mons", "Toky", "Tokyoo", "York", ",", ", ", "New York, Miami", "/"}) {
        EXPECT_EQ(parseTimeZone(text), nullptr) << text;
    }
    EXPECT_EQ(findTimeZone(0), nullptr);
    EXPECT_EQ(findTimeZone(149), nullptr);
}

TEST(TimeZones, HaveOneNumberAndOneNameEach) {
    std::set<uint16_t> ids;
    std::set<std::string> names;
    for (const TimeZone& zone : timeZones()) {
        EXPECT_TRUE(ids.insert(zone.id).second) << zone.id;
        EXPECT_TRUE(names.insert(zone.name).second) << zone.name;
    }
    EXPECT_EQ(ids.size(), 148u);
}

TEST(TimeZones, AreKnownToThisMachine) {
    for (const TimeZone& zone : timeZones()) {
        EXPECT_TRUE(localTimeIn(zone, true, std::chrono::system_clock::time_point{})) << zone.name;
    }
    EXPECT_EQ(localTimeIn({1, "Mars/Olympus_Mons", ""}, true, {}), std::nullopt);
}

struct MomentRow {
    const char* zone;
    time_t moment;
    const char *withSaving, *without;
};

static void PrintTo(const MomentRow& row, std::ostream* stream) { *stream << row.zone << " at " << row.moment; }

class TimeZoneMoments : public testing::TestWithParam<MomentRow> {};

TEST_P(TimeZoneMoments, LocalTimeWithAndWithoutDaylightSaving) {
    const MomentRow& row = GetParam();
    const TimeZone* zone = parseTimeZone(row.zone);
    ASSERT_NE(zone, nullptr);
    const auto moment = std::chrono::system_clock::from_time_t(row.moment);
    EXPECT_EQ(localTimeIn(*zone, true, moment), row.withSaving);
    EXPECT_EQ(localTimeIn(*zone, false, moment), row.without);
    EXPECT_EQ(localTimeIn(*zone, true, moment + std::chrono::milliseconds(999)), row.withSaving);
}

// 1768478400 is 2026-01-15 12:00:00 UTC, 1784116800 is 2026-07-15 12:00:00 UTC.
static const MomentRow kMoments[] = {
    {"Europe/Berlin", 1768478400, "20260115130000", "20260115130000"},
    {"Europe/Berlin", 1784116800, "20260715140000", "20260715130000"},
    {"America/New_York", 1768478400, "20260115070000", "20260115070000"},
    {"America/New_York", 1784116800, "20260715080000", "20260715070000"},
    {"Australia/Sydney", 1768478400, "20260115230000", "20260115220000"},
    {"Australia/Sydney", 1784116800, "20260715220000", "20260715220000"},
    {"Australia/Lord_Howe", 1768478400, "20260115230000", "20260115223000"},
    {"Europe/Dublin", 1768478400, "20260115120000", "20260115120000"},
    {"Europe/Dublin", 1784116800, "20260715130000", "20260715120000"},
    {"Africa/Casablanca", 1784116800, "20260715130000", "20260715130000"},
    {"Asia/Kolkata", 1784116800, "20260715173000", "20260715173000"},
    {"Etc/GMT+12", 1768478400, "20260115000000", "20260115000000"},
    {"Europe/Berlin", 1774746000, "20260329030000", "20260329020000"},  // the moment it begins
    {"Europe/Berlin", 1774745999, "20260329015959", "20260329015959"},
};
INSTANTIATE_TEST_SUITE_P(Moments, TimeZoneMoments, testing::ValuesIn(kMoments));
