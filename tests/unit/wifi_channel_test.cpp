// Which channels a radio region allows.
#include "util/wifi_channel.h"

#include "support/handler_test.h"

using fake::Events;

namespace unit {
namespace {

using WifiChannel = HandlerTest;

constexpr const char* kTable = "/etc/wifi_channel.ini";

struct Row {
    const char* name;
    std::optional<int> region;
    fake::IniFile table;
    std::vector<int> allowed, refused;
};

const Row kRows[] = {
    {"an empty file", 1, {}, {}, {0, 1, 6}},
    {"no section of the region", 3, {{"1", {"6"}}, {"2", {"6"}}}, {}, {0, 6}},
    {"an empty section", 1, {{"1", {}}, {"2", {"6"}}}, {}, {0, 6}},
    {"a section of its own", 2, {{"1", {"1", "6"}}, {"2", {"3", "6"}}}, {3, 6}, {1, 0, 36, -3}},
    {"channel 0 in the list", 1, {{"1", {"0", "6"}}}, {6}, {0}},
    {"a field that is no number", 1, {{"1", {"x", "auto", "6"}}}, {6}, {0, 1}},
    {"first and last field", 1, {{"1", {"1", "2", "13"}}}, {1, 2, 13}, {3, 12, 14}},
    {"fields read as decimal numbers", 1, {{"1", {"06", " 7", "8 ", "9x", "0x0A", "+11"}}}, {6, 7, 8, 9, 11}, {10, 0}},
    {"channels of a byte", 1, {{"1", {"165", "255", "256"}}}, {165, 255, 256}, {0, 1}},
    {"names that only resemble the region's",
     1,
     {{"01", {"1"}}, {"11", {"2"}}, {"1 ", {"3"}}, {"", {"4"}}},
     {},
     {1, 2, 3, 4}},
    {"the region's section behind others", 1, {{"01", {"1"}}, {"11", {"2"}}, {"1", {"3"}}}, {3}, {1, 2}},
    {"no region", std::nullopt, {{"0", {"6"}}, {"1", {"7"}}}, {6}, {7}},
    {"a negative region", -2, {{"2", {"6"}}, {"-2", {"7"}}}, {7}, {6}},
    {"the largest region", 2147483647, {{"2147483647", {"6"}}}, {6}, {7}},
    {"the smallest region", -2147483647 - 1, {{"-2147483648", {"6"}}}, {6}, {7}},
};

TEST_F(WifiChannel, IsAllowedWhenTheRegionsSectionNamesIt) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        fake::camera().region = row.region;
        fake::camera().iniFiles[kTable] = row.table;
        for (const int channel : row.allowed) EXPECT_EQ(checkWifiChannel(channel), 0) << channel;
        for (const int channel : row.refused) EXPECT_EQ(checkWifiChannel(channel), -1) << channel;
        EXPECT_EQ(fake::openLists(), 0);
    }
}

TEST_F(WifiChannel, IsRefusedWithoutAFile) {
    fake::camera().region = 1;
    fake::camera().iniFiles["/etc/other.ini"] = {{"1", {"6"}}};
    EXPECT_EQ(checkWifiChannel(6), -1);
}

// The region's section is asked for channel 0 as for any other; the sections are given back behind the fields.
TEST_F(WifiChannel, AsksAndGivesBackInOrder) {
    const Events sections{"HWMIB_getRegion", "CfgEnumSec /etc/wifi_channel.ini"};
    const struct {
        const char* name;
        int region, channel, result;
        Events behind;
    } rows[] = {
        {"listed", 12, 6, 0, {"CfgEnumField /etc/wifi_channel.ini 12", "ListFree 1", "ListFree 013"}},
        {"not listed", 12, 7, -1, {"CfgEnumField /etc/wifi_channel.ini 12", "ListFree 1", "ListFree 013"}},
        {"channel 0", 12, 0, -1, {"CfgEnumField /etc/wifi_channel.ini 12", "ListFree 1", "ListFree 013"}},
        {"empty section", 11, 6, -1, {"CfgEnumField /etc/wifi_channel.ini 11", "ListFree null", "ListFree 013"}},
        {"no such section", 13, 6, -1, {"ListFree 013"}},
    };
    fake::camera().iniFiles[kTable] = {{"013", {"6"}}, {"11", {}}, {"12", {"1", "6"}}, {"13 ", {"6"}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fake::clearEvents();
        fake::camera().region = row.region;
        EXPECT_EQ(checkWifiChannel(row.channel), row.result);
        Events expected = sections;
        expected.insert(expected.end(), row.behind.begin(), row.behind.end());
        EXPECT_EQ(fake::events(), expected);
    }
}

TEST_F(WifiChannel, GivesBackAnEmptyListOfSections) {
    fake::camera().region = 1;
    EXPECT_EQ(checkWifiChannel(6), -1);
    EXPECT_EQ(fake::events(), (Events{"HWMIB_getRegion", "CfgEnumSec /etc/wifi_channel.ini", "ListFree null"}));
}

}  // namespace
}  // namespace unit
