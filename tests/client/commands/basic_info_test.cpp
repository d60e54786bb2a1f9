#include "client/commands/basic_info.h"

#include <gtest/gtest.h>

#include "datagrams.h"

using namespace client;

TEST(BasicInfo, RequestHoldsEveryField) {
    const BasicInfo info{"Front door",
                         8089,
                         false,
                         {{192, 0, 2, 10}},
                         {{255, 255, 254, 0}},
                         {{192, 0, 2, 1}},
                         {{198, 51, 100, 53}},
                         {{203, 0, 113, 53}}};
    Bytes expected = protectedBytes(239);
    putText(expected, 150, "Front door");
    put(expected, 214, {192, 0, 2, 10, 0x99, 0x1F, 0, 0, 255, 255, 254, 0, 192, 0, 2, 1});
    put(expected, 230, {198, 51, 100, 53, 203, 0, 113, 53, 0});
    EXPECT_EQ(encodeBasicInfo({"admin", Secret("secret")}, info), expected);
}

TEST(BasicInfo, DhcpIsTheLastByte) {
    Bytes expected = protectedBytes(239);
    put(expected, 218, {80, 0});
    put(expected, 238, {1});
    EXPECT_EQ(encodeBasicInfo({"admin", Secret("secret")}, {"", 80, true, {}, {}, {}, {}, {}}), expected);
}

TEST(BasicInfo, NameLeavesRoomForItsNul) {
    const auto request =
        encodeBasicInfo({"admin", Secret("secret")}, {std::string(70, 'n'), 80, true, {}, {}, {}, {}, {}});
    EXPECT_EQ(Bytes(request.begin() + 150, request.begin() + 213), Bytes(63, 'n'));
    EXPECT_EQ(request[213], 0);
}
