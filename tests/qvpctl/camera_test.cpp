#include "qvpctl/camera.h"

#include <gtest/gtest.h>

#include "datagrams.h"

TEST(Camera, HoldsEveryFieldOfTheReply) {
    auto camera = decodeCamera(kPrimaryProtocol, discoveryReply());
    ASSERT_TRUE(camera);
    camera->interface = "eth0";
    EXPECT_EQ(recordOf(*camera).dump(),
              R"({"mac":"02:00:5e:10:00:af","address":"192.0.2.10","name":"Front door","brand":"Brand",)"
              R"("product":"Product","model":"Model","firmware":"1.05","hardware":"Rev B","httpPort":8080,)"
              R"("netmask":"255.255.255.0","gateway":"192.0.2.1","dns":["192.0.2.53","198.51.100.53"],"dhcp":true,)"
              R"("localTime":"2026-01-31T23:59:58","timezone":300,"daylightSaving":true,)"
              R"("url":"http://192.0.2.10:8080/","interface":"eth0"})");
}

TEST(Camera, OfTheLandapFamilyHasNoHardwareVersion) {
    const auto camera = decodeCamera(kLandapProtocol, landapDiscoveryReply());
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->name, "Front door");
    EXPECT_EQ(camera->timezone, 300);
    EXPECT_EQ(camera->hardware, "");
}

TEST(Camera, IsNotReadFromAnotherLength) {
    for (const size_t length : {0, 22, 333, 334, 504, 506, 1024}) {
        Bytes reply = discoveryReply();
        reply.resize(length);
        EXPECT_FALSE(decodeCamera(kPrimaryProtocol, reply)) << length;
    }
    EXPECT_FALSE(decodeCamera(kLandapProtocol, discoveryReply()));
}

TEST(Camera, IsNotReadFromAReplyThatFailed) {
    Bytes reply = discoveryReply();
    put(reply, 16, {3, 0});
    EXPECT_FALSE(decodeCamera(kPrimaryProtocol, reply));
}

TEST(Camera, EndsTextsAtTheirFields) {
    Bytes reply = discoveryReply();
    put(reply, 22, Bytes(483, 'x'));
    const auto camera = decodeCamera(kPrimaryProtocol, reply);
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
    EXPECT_EQ(decodeCamera(kPrimaryProtocol, reply)->name, "A");
}

TEST(Camera, LeavesOutWhatIsNotSet) {
    Bytes reply = discoveryReply();
    put(reply, 306, {0, 0, 0, 0, 198, 51, 100, 53, 2});
    put(reply, 315, Bytes(16));
    put(reply, 333, {0});
    const Record record = recordOf(*decodeCamera(kPrimaryProtocol, reply));
    EXPECT_EQ(record["dns"], Record({"198.51.100.53"}));
    EXPECT_EQ(record["dhcp"], false);
    EXPECT_TRUE(record["localTime"].is_null());
    EXPECT_EQ(record["daylightSaving"], false);
    put(reply, 310, {0, 0, 0, 0});
    EXPECT_EQ(recordOf(*decodeCamera(kPrimaryProtocol, reply))["dns"].dump(), "[]");
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
        EXPECT_EQ(webUrl(*decodeCamera(kPrimaryProtocol, reply)), row.url);
    }
}
