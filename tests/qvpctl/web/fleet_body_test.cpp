// The cameras of a request as a file of cameras.
#include "qvpctl/web/fleet_body.h"

#include <gmock/gmock.h>

#include "client/error.h"
#include "client/text.h"

namespace {

client::CameraFile read(const std::string& json) { return fleetFile(JsonBody(json)); }

std::string valueOf(const client::Assignment& one) {
    const auto* text = std::get_if<std::string>(&one.value);
    return text != nullptr ? *text : std::get<client::Secret>(one.value).reveal();
}

TEST(FleetBody, EveryValueStandsForItself) {
    for (const char* name : {"plain", "'quoted", "'=formula", "=formula", "a,b;c", "\\\"both\\\"", "\\\\x41", "\\\\",
                             "two\\nlines", " edges "}) {
        const auto file =
            read(R"({"cameras":[{"mac":"02:00:00:00:00:01","settings":{"name":")" + std::string(name) + R"("}}]})");
        ASSERT_TRUE(file.faults.empty()) << name << file.faults[0].text;
        const std::string expected = nlohmann::json::parse("\"" + std::string(name) + "\"");
        EXPECT_EQ(valueOf(file.cameras.at(0).assignments.at(0)), expected);
    }
}

TEST(FleetBody, SecretsAreOfTheirOwnCamera) {
    const auto file = read(R"({"cameras":[{"mac":"02:00:00:00:00:01","settings":{"password":"one"}},
                                          {"mac":"02:00:00:00:00:02","settings":{"password":"prompt"}}]})");
    ASSERT_TRUE(file.faults.empty());
    EXPECT_EQ(valueOf(file.cameras.at(0).assignments.at(0)), "one");
    EXPECT_EQ(valueOf(file.cameras.at(1).assignments.at(0)), "prompt");
}

TEST(FleetBody, FaultsNameTheCamera) {
    const auto file = read(
        R"({"cameras":[{"mac":"02:00:00:00:00:01","settings":{"name":"a"}},{"mac":"x","settings":{"upnp":"maybe"}}]})");
    ASSERT_EQ(file.faults.size(), 2u);
    for (const client::Fault& fault : file.faults) {
        EXPECT_EQ(fault.place.line, 2u);
        EXPECT_EQ(fault.place.column, 0u);
    }
}

TEST(FleetBody, ATableReadsNeitherFilesNorTheEnvironment) {
    const auto file =
        read(R"({"csv":"mac,password\n02:00:00:00:00:01,env:HOME\n02:00:00:00:00:02,file:/etc/hostname\n"})");
    ASSERT_EQ(file.faults.size(), 2u);
    EXPECT_THAT(file.faults[0].text, testing::HasSubstr("which a page does not read"));
    EXPECT_THAT(file.faults[1].text, testing::HasSubstr("which a page does not read"));
}

TEST(FleetBody, ATablesSecretsComeByTheirReference) {
    const auto file = read(
        R"({"csv":"mac,password\n02:00:00:00:00:01,prompt:a\n02:00:00:00:00:02,prompt\n","secrets":{"prompt:a":"one","prompt":"two"}})");
    ASSERT_TRUE(file.faults.empty());
    EXPECT_EQ(valueOf(file.cameras.at(0).assignments.at(0)), "one");
    EXPECT_EQ(valueOf(file.cameras.at(1).assignments.at(0)), "two");
}

TEST(FleetBody, DepthIsBounded) {
    EXPECT_NO_THROW(JsonBody(R"({"a":[[[[1]]]]})"));
    EXPECT_THROW(JsonBody(R"({"a":[[[[[[[[[1]]]]]]]]]})"), client::Error);
}

TEST(FleetBody, WhatIsNoRequestIsRefused) {
    for (const char* json :
         {"{}", "[]", R"({"csv":1})", R"({"cameras":[]})", R"({"cameras":{}})", R"({"cameras":[1]})",
          R"({"cameras":[{"mac":1,"settings":{}}]})", R"({"cameras":[{"mac":"x"}]})",
          R"({"cameras":[{"mac":"x","settings":{"name":1}}]})", R"({"cameras":[{"mac":"x","settings":{"name":""}}]})",
          R"({"csv":"mac\n","secrets":[]})", R"({"csv":"mac\n","secrets":{"a":1}})", R"({"a":[[[[[[[[[1]]]]]]]]]})"}) {
        EXPECT_THROW(read(json), client::Error) << json;
    }
}

}  // namespace
