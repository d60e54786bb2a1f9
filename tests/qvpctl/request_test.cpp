#include "qvpctl/request.h"

#include <gtest/gtest.h>

#include "datagrams.h"

TEST(Request, ToAllIsABroadcastHeader) {
    const PacketHeader header = requestToAll(kPrimaryProtocol, 0x00A1, 0x1234);
    const auto bytes = bytesOf(header);
    EXPECT_EQ(
        Bytes(bytes.begin(), bytes.end()),
        (Bytes{0xFD, 0xFD, 0x34, 0x12, 0xA1, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0}));
}

TEST(Request, OfTheLandapFamilyHasProtocolOne) {
    const PacketHeader header = requestToAll(kLandapProtocol, 0x00A1, 0);
    EXPECT_EQ(bytesOf(header)[18], 1);
}

TEST(Request, IsAnsweredByItsReplyInItsFamilyOnly) {
    const PacketHeader primary = requestToAll(kPrimaryProtocol, 0x00A1, 0x1234);
    const PacketHeader landap = requestToAll(kLandapProtocol, 0x00A1, 0x1234);
    EXPECT_TRUE(answers(discoveryReply(), primary));
    EXPECT_TRUE(answers(landapDiscoveryReply(), landap));
    EXPECT_FALSE(answers(discoveryReply(), landap));
    EXPECT_FALSE(answers(landapDiscoveryReply(), primary));
}

TEST(Request, IsNotAnsweredByAnythingElse) {
    const PacketHeader request = requestToAll(kPrimaryProtocol, 0x00A1, 0x1234);
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
