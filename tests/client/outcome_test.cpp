#include "client/outcome.h"

#include <gtest/gtest.h>

#include "client/error.h"
#include "datagrams.h"

using namespace client;

static Bytes settingReply(uint8_t status, Bytes result, Bytes milliseconds = {}) {
    Bytes reply = replyTo(0x00A2, 38, status);
    put(reply, 22, result);
    put(reply, 30, milliseconds);
    return reply;
}

static Error errorOf(const Bytes& reply) try {
    checkOutcome(reply);
    return Error(ErrorKind::Local, "none");
} catch (const Error& error) {
    return error;
}

TEST(Outcome, DoneIsNoError) {
    EXPECT_NO_THROW(checkOutcome(settingReply(0, {})));
    EXPECT_NO_THROW(checkOutcome(replyTo(0x00A1, 505)));
}

TEST(Outcome, OfARefusalIsInWordsWithItsCode) {
    const std::pair<Bytes, std::string> rows[] = {
        {{3, 0}, "port is 0 or 8088"},
        {{8, 0}, "neither static nor DHCP"},
        {{101, 0}, "hour, minute and second must not be 0"},
        {{102, 0}, "time zone"},
        {{103, 0}, "daylight saving"},
        {{104, 0}, "NTP"},
        {{201, 0}, "do not enable the radio"},
        {{202, 0}, "channel is not allowed"},
        {{204, 0}, "infrastructure nor ad hoc"},
        {{205, 0}, "that encryption"},
        {{206, 0}, "that authentication"},
        {{207, 0}, "WEP key length"},
        {{208, 0}, "WEP key format"},
        {{210, 0}, "wrong length or characters for WPA"},
        {{211, 0}, "wrong length or characters for WEP"},
        {{212, 0}, "WEP key index"},
        {{0x30, 1}, "network services"},
    };
    for (const auto& [code, words] : rows) {
        const Error error = errorOf(settingReply(2, code));
        const std::string number = "code " + std::to_string(code[0] + 256 * code[1]);
        EXPECT_EQ(error.kind(), ErrorKind::Refused);
        EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
        EXPECT_NE(std::string(error.what()).find(number), std::string::npos) << error.what();
    }
    EXPECT_STREQ(errorOf(settingReply(2, {1, 2, 3, 4})).what(),
                 "the camera refused: for a reason of its own, code 67305985");
}

TEST(Outcome, WithoutACodeTellsTheStatus) {
    EXPECT_STREQ(errorOf(replyTo(0x00A3, 26, 2)).what(), "the camera refused: with status 2");
    EXPECT_STREQ(errorOf(settingReply(9, {3})).what(), "the camera refused: with status 9");
    EXPECT_EQ(errorOf(settingReply(9, {3})).kind(), ErrorKind::Refused);
}

TEST(Outcome, StatusThreeIsTheLogin) {
    EXPECT_EQ(errorOf(settingReply(3, {3})).kind(), ErrorKind::Credentials);
    EXPECT_EQ(errorOf(replyTo(0x00A8, 274, 3)).kind(), ErrorKind::Credentials);
}

TEST(Outcome, TimeAwayIsWhatASettingReplySays) {
    EXPECT_EQ(timeAway(settingReply(0, {}, {0x10, 0x27})), std::chrono::milliseconds(10000));
    EXPECT_EQ(timeAway(settingReply(0, {}, {0x01, 0x02, 0x03, 0x04})), std::chrono::milliseconds(67305985));
    EXPECT_EQ(timeAway(replyTo(0x00A1, 505)), std::chrono::milliseconds(0));
}
