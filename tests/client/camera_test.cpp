#include "client/camera.h"

#include <gtest/gtest.h>

#include "client/text.h"
#include "datagrams.h"

using namespace client;

TEST(Camera, HoldsEveryFieldOfTheReply) {
    const auto camera = decodeCamera(Family::Primary, discoveryReply());
    ASSERT_TRUE(camera);
    EXPECT_EQ(macText(camera->mac), "02:00:5e:10:00:af");
    EXPECT_EQ(addressText(camera->address), "192.0.2.10");
    EXPECT_EQ(camera->name, "Front door");
    EXPECT_EQ(camera->brand, "Brand");
    EXPECT_EQ(camera->product, "Product");
    EXPECT_EQ(camera->model, "Model");
    EXPECT_EQ(camera->firmware, "1.05");
    EXPECT_EQ(camera->hardware, "Rev B");
    EXPECT_EQ(camera->httpPort, 8080);
    EXPECT_EQ(addressText(camera->netmask), "255.255.255.0");
    EXPECT_EQ(addressText(camera->gateway), "192.0.2.1");
    ASSERT_EQ(camera->dns.size(), 2u);
    EXPECT_EQ(addressText(camera->dns[0]), "192.0.2.53");
    EXPECT_EQ(addressText(camera->dns[1]), "198.51.100.53");
    EXPECT_TRUE(camera->dhcp);
    EXPECT_EQ(camera->localTime, "2026-01-31T23:59:58");
    EXPECT_EQ(camera->timezone, 300);
    EXPECT_TRUE(camera->daylightSaving);
}

TEST(Camera, OfTheLandapFamilyHasNoHardwareVersion) {
    const auto camera = decodeCamera(Family::Landap, landapDiscoveryReply());
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->name, "Front door");
    EXPECT_EQ(camera->timezone, 300);
    EXPECT_EQ(camera->hardware, "");
}

TEST(Camera, IsNotReadFromAnotherLength) {
    for (const size_t length : {0, 22, 333, 334, 504, 506, 1024}) {
        Bytes reply = discoveryReply();
        reply.resize(length);
        EXPECT_FALSE(decodeCamera(Family::Primary, reply)) << length;
    }
    EXPECT_FALSE(decodeCamera(Family::Landap, discoveryReply()));
}

TEST(Camera, IsNotReadFromAReplyThatFailed) {
    Bytes reply = discoveryReply();
    put(reply, 16, {3, 0});
    EXPECT_FALSE(decodeCamera(Family::Primary, reply));
}

TEST(Camera, EndsTextsAtTheirFields) {
    Bytes reply = discoveryReply();
    put(reply, 22, Bytes(483, 'x'));
    const auto camera = decodeCamera(Family::Primary, reply);
    ASSERT_TRUE(camera);
    const std::pair<std::string, size_t> rows[] = {
        {camera->brand, 64},    {camera->product, 64},  {camera->model, 32},
        {camera->firmware, 32}, {camera->hardware, 32}, {camera->name, 64},
    };
    for (const auto& [text, width] : rows) {
        EXPECT_EQ(text, std::string(width, 'x'));
    }
}

TEST(Camera, IgnoresWhatStandsBehindATextsNul) {
    Bytes reply = discoveryReply();
    put(reply, 226, {'A', 0, 'B'});
    EXPECT_EQ(decodeCamera(Family::Primary, reply)->name, "A");
}

TEST(Camera, LeavesOutWhatIsNotSet) {
    Bytes reply = discoveryReply();
    put(reply, 306, {0, 0, 0, 0, 198, 51, 100, 53, 2});
    put(reply, 315, Bytes(16));
    put(reply, 333, {0});
    const Camera camera = *decodeCamera(Family::Primary, reply);
    ASSERT_EQ(camera.dns.size(), 1u);
    EXPECT_EQ(addressText(camera.dns[0]), "198.51.100.53");
    EXPECT_FALSE(camera.dhcp);
    EXPECT_EQ(camera.localTime, std::nullopt);
    EXPECT_FALSE(camera.daylightSaving);
    put(reply, 310, {0, 0, 0, 0});
    EXPECT_TRUE(decodeCamera(Family::Primary, reply)->dns.empty());
}

TEST(Camera, ReplyIsAsLongAsItsFamilyHasIt) {
    EXPECT_EQ(discoveryLength(Family::Primary), 505u);
    EXPECT_EQ(discoveryLength(Family::Landap), 334u);
}

TEST(Camera, WebUrl) {
    struct Row {
        Bytes addressAndPort;
        std::optional<std::string> url;
    };
    const Row rows[] = {
        {{192, 0, 2, 10, 0, 80}, "http://192.0.2.10/"},
        {{192, 0, 2, 10, 0, 81}, "http://192.0.2.10:81/"},
        {{192, 0, 2, 10, 0xFF, 0xFF}, "http://192.0.2.10:65535/"},
        {{192, 0, 2, 10, 80, 0}, "http://192.0.2.10:20480/"},
        {{192, 0, 2, 10, 0, 0}, std::nullopt},
        {{0, 0, 0, 0, 0, 80}, std::nullopt},
    };
    for (const Row& row : rows) {
        Bytes reply = discoveryReply();
        put(reply, 290, row.addressAndPort);
        EXPECT_EQ(webUrl(*decodeCamera(Family::Primary, reply)), row.url);
    }
}
