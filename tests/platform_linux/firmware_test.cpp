#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform.h"

TEST(Firmware, IsRefusedWithALineEach) {
    char image[] = "image";
    testing::internal::CaptureStderr();
    EXPECT_EQ(VerifyFWCode(image, 5), -1);
    EXPECT_NE(UpgradeFWCode(image, 5), 0);
    EXPECT_LE(cfgAesDecode(image, 5), 0);
    EXPECT_NE(unpackCFG(image, 5), 0);
    EXPECT_EQ(VerifyFWCode(nullptr, 0), -1);
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 5);
    EXPECT_STREQ(image, "image");
}
