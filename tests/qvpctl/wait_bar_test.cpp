#include "qvpctl/wait_bar.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(WaitBar, GrowsButIsNeverFull) {
    EXPECT_EQ(barText(0ms, 10s), "[....................]  0 s of up to 10 s");
    EXPECT_EQ(barText(4999ms, 10s), "[#########...........]  4 s of up to 10 s");
    EXPECT_EQ(barText(5s, 10s), "[##########..........]  5 s of up to 10 s");
    EXPECT_EQ(barText(10s, 10s), "[###################.]  10 s of up to 10 s");
    EXPECT_EQ(barText(100s, 10s), "[###################.]  100 s of up to 10 s");
    EXPECT_EQ(barText(1s, 0s), "[###################.]  1 s of up to 0 s");
}
