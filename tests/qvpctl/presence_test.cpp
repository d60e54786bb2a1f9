#include "qvpctl/presence.h"

#include <gtest/gtest.h>

#include "datagrams.h"

TEST(Presence, HoldsEveryFieldOfTheReport) {
    setenv("TZ", "XXX-5:30", 1);
    tzset();
    auto presence = decodePresence(presenceReport());
    ASSERT_TRUE(presence);
    presence->interface = "eth0";
    EXPECT_EQ(recordOf(*presence, 1767225600).dump(),
              R"({"time":"2026-01-01T05:30:00+05:30","mac":"02:00:5e:10:00:af","address":"192.0.2.10",)"
              R"("netmask":"255.255.255.0","name":"Front door","product":"Product","firmware":"1.05",)"
              R"("hardware":"Rev B","sequence":7,"interface":"eth0"})");
}

TEST(Presence, IsNotReadFromAnotherLength) {
    for (const size_t length : {0, 1, 22, 316, 318, 1024}) {
        Bytes report = presenceReport();
        report.resize(length);
        EXPECT_FALSE(decodePresence(report)) << length;
    }
}

TEST(Presence, IsNotReadFromAnotherHeader) {
    struct Row {
        size_t offset;
        uint8_t value;
    };
    const Row rows[] = {
        {0, 0xFE}, {1, 0xFE}, {4, 0xA1}, {5, 0x01}, {18, 1}, {19, 2}, {20, 0x28}, {21, 0x02},
    };
    for (const Row& row : rows) {
        Bytes report = presenceReport();
        put(report, row.offset, {row.value});
        EXPECT_FALSE(decodePresence(report)) << row.offset;
    }
}

TEST(Presence, EndsTextsAtTheirFields) {
    Bytes report = presenceReport();
    put(report, 22, Bytes(295, 'x'));
    const auto presence = decodePresence(report);
    ASSERT_TRUE(presence);
    EXPECT_EQ(presence->product, std::string(64, 'x'));
    EXPECT_EQ(presence->firmware, std::string(32, 'x'));
    EXPECT_EQ(presence->hardware, std::string(32, 'x'));
    EXPECT_EQ(presence->name, std::string(64, 'x'));
}
