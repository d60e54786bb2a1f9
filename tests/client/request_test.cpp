#include "client/request.h"

#include <gtest/gtest.h>

#include "datagrams.h"

using namespace client;

TEST(Request, ToAllIsABroadcastHeader) {
    const PacketHeader header = requestToAll(Family::Primary, 0x00A1, 0x1234);
    const auto bytes = bytesOf(header);
    EXPECT_EQ(
        Bytes(bytes.begin(), bytes.end()),
        (Bytes{0xFD, 0xFD, 0x34, 0x12, 0xA1, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0}));
}

TEST(Request, ToOneCameraNamesItsMacAndWhatFollows) {
    const Mac mac = {{0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF}};
    const PacketHeader header = requestTo(mac, Family::Primary, 0x0103, 0xBEEF, 150);
    const auto bytes = bytesOf(header);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end()),
              (Bytes{0xFD, 0xFD, 0xEF, 0xBE, 0x03, 0x01, 0x02, 0x00, 0x5E, 0x10, 0x00,
                     0xAF, 0,    0,    0,    0,    0x77, 0x77, 2,    0,    0x80, 0}));
}

TEST(Request, ToOneCameraIsAnsweredByThatCameraOnly) {
    for (size_t offset = 6; offset < 12; offset++) {
        const PacketHeader request =
            requestTo({{0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF}}, Family::Primary, 0x00A1, 0x1234, 22);
        Bytes reply = discoveryReply();
        EXPECT_TRUE(answers(reply, request));
        reply[offset] ^= 1;
        EXPECT_FALSE(answers(reply, request)) << offset;
        EXPECT_TRUE(answers(reply, requestToAll(Family::Primary, 0x00A1, 0x1234))) << offset;
    }
}

TEST(Request, OfTheLandapFamilyHasProtocolOne) {
    const PacketHeader header = requestToAll(Family::Landap, 0x00A1, 0);
    EXPECT_EQ(bytesOf(header)[18], 1);
}

TEST(Request, IsAnsweredByItsReplyInItsFamilyOnly) {
    const PacketHeader primary = requestToAll(Family::Primary, 0x00A1, 0x1234);
    const PacketHeader landap = requestToAll(Family::Landap, 0x00A1, 0x1234);
    EXPECT_TRUE(answers(discoveryReply(), primary));
    EXPECT_TRUE(answers(landapDiscoveryReply(), landap));
    EXPECT_FALSE(answers(discoveryReply(), landap));
    EXPECT_FALSE(answers(landapDiscoveryReply(), primary));
}

TEST(Request, IsNotAnsweredByAnythingElse) {
    const PacketHeader request = requestToAll(Family::Primary, 0x00A1, 0x1234);
    for (const size_t offset : {0, 1, 2, 3, 4, 5, 18, 19, 20, 21}) {
        Bytes reply = discoveryReply();
        reply[offset] ^= 1;
        EXPECT_FALSE(answers(reply, request)) << offset;
    }
    for (const size_t length : {0, 1, 21, 22, 504, 506}) {
        Bytes reply = discoveryReply();
        reply.resize(length);
        EXPECT_FALSE(answers(reply, request)) << length;
    }
}
