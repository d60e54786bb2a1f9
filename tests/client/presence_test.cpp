#include "client/presence.h"

#include <gtest/gtest.h>

#include "client/text.h"
#include "datagrams.h"

using namespace client;

TEST(Presence, HoldsEveryFieldOfTheReport) {
    const auto presence = decodePresence(presenceReport());
    ASSERT_TRUE(presence);
    EXPECT_EQ(presence->sequence, 7);
    EXPECT_EQ(macText(presence->mac), "02:00:5e:10:00:af");
    EXPECT_EQ(addressText(presence->address), "192.0.2.10");
    EXPECT_EQ(addressText(presence->netmask), "255.255.255.0");
    EXPECT_EQ(presence->name, "Front door");
    EXPECT_EQ(presence->product, "Product");
    EXPECT_EQ(presence->firmware, "1.05");
    EXPECT_EQ(presence->hardware, "Rev B");
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
