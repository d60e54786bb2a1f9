#include "client/commands/clock.h"

#include <gtest/gtest.h>

#include "datagrams.h"

using namespace client;

TEST(Clock, RequestEndsWithTheServersNul) {
    Bytes expected = protectedBytes(180);
    putText(expected, 150, "20260131102030");
    put(expected, 166, {0x2C, 0x01, 1, 1});
    putText(expected, 170, "192.0.2.1");
    EXPECT_EQ(encodeClock({"admin", Secret("secret")}, {"20260131102030", 300, true, true, "192.0.2.1"}), expected);
}

TEST(Clock, WithoutATimeTheRequestLeavesTheClockAlone) {
    Bytes expected = protectedBytes(171);
    putText(expected, 150, "00000000000000");
    put(expected, 166, {51, 0, 0, 0});
    EXPECT_EQ(encodeClock({"admin", Secret("secret")}, {"", 51, false, false, ""}), expected);
}

TEST(Clock, ReplyHoldsEveryField) {
    Bytes reply = replyTo(0x00AC, 122);
    putText(reply, 22, "20260131235958");
    put(reply, 38, {0x2C, 0x01, 1, 1});
    putText(reply, 42, "ntp.example.com");
    const ClockState clock = decodeClock(reply);
    EXPECT_EQ(clock.localTime, "2026-01-31T23:59:58");
    EXPECT_EQ(clock.timezone, 300);
    EXPECT_TRUE(clock.daylightSaving);
    EXPECT_TRUE(clock.ntp);
    EXPECT_EQ(clock.ntpServer, "ntp.example.com");
}

TEST(Clock, ReplyWithOddFields) {
    Bytes reply = replyTo(0x00AC, 122);
    putText(reply, 22, "2026-01-31 235");
    put(reply, 42, Bytes(80, 'x'));
    const ClockState clock = decodeClock(reply);
    EXPECT_EQ(clock.localTime, std::nullopt);
    EXPECT_EQ(clock.timezone, 0);
    EXPECT_FALSE(clock.daylightSaving || clock.ntp);
    EXPECT_EQ(clock.ntpServer, std::string(63, 'x'));
    reply.resize(121);
    EXPECT_THROW(decodeClock(reply), std::length_error);
}
