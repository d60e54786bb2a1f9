#include "qvpctl/options.h"

#include <gtest/gtest.h>

TEST(Options, SecondsToWait) {
    for (const char* good : {"0.1", "1", "2.5", "3600"}) {
        EXPECT_EQ(checkSeconds(good), "") << good;
    }
    for (const char* bad : {"", "0", "0.09", "-1", "3600.1", "nan", "inf", "1s", "1 2", "x"}) {
        EXPECT_NE(checkSeconds(bad), "") << bad;
    }
}

TEST(Options, Counts) {
    for (const char* good : {"1", "10", "4294967295"}) {
        EXPECT_EQ(checkCount(good), "") << good;
    }
    for (const char* bad : {"", "0", "01", "-1", "+1", "1.0", "1e3", "0x1", "4294967296", "99999999999", "x"}) {
        EXPECT_NE(checkCount(bad), "") << bad;
    }
}

TEST(Options, AWaitIsInMilliseconds) {
    CommonOptions options;
    EXPECT_EQ(options.wait(), std::chrono::milliseconds(2000));
    options.waitSeconds = 0.1;
    EXPECT_EQ(options.wait(), std::chrono::milliseconds(100));
}
