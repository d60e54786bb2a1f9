#include "qvpctl/keys.h"

#include <gmock/gmock.h>

#include "client/error.h"

using client::Error;
using client::ErrorKind;
using client::Group;
using client::Secret;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

static std::vector<std::string> namesOf(const std::vector<std::string>& keys) {
    std::vector<std::string> names;
    for (const client::Setting* setting : settingsNamed(keys)) names.emplace_back(setting->key);
    return names;
}

template <typename Work>
static std::string faultOf(Work work) try {
    work();
    return "";
} catch (const Error& error) {
    EXPECT_EQ(error.kind(), ErrorKind::BadValue);
    return error.what();
}

TEST(Keys, NameOneSettingOrAllBehindAWord) {
    EXPECT_THAT(namesOf({"name"}), ElementsAre("name"));
    EXPECT_THAT(namesOf({"ipv4"}), ElementsAre("ipv4.method", "ipv4.address", "ipv4.gateway", "ipv4.dns"));
    EXPECT_THAT(namesOf({"time.zone", "name", "time.zone"}), ElementsAre("name", "time.zone"));
    EXPECT_EQ(namesOf({}).size(), 24u);
}

TEST(Keys, UnknownOnesAreRefusedWithTheNearest) {
    EXPECT_EQ(faultOf([] { settingsNamed({"ipv4.adress"}); }),
              "there is no setting ipv4.adress; did you mean ipv4.address?");
    EXPECT_EQ(faultOf([] {
                  settingsNamed({"name", "frobnicate"});
              }),
              "there is no such setting; 'qvpctl help settings' lists them");
    EXPECT_EQ(faultOf([] { settingsNamed({"\x1b"}); }), "there is no such setting; 'qvpctl help settings' lists them");
    EXPECT_NE(faultOf([] { settingsNamed({""}); }), "");
    EXPECT_NE(faultOf([] { settingsNamed({"ipv"}); }), "");
}

TEST(Keys, AssignmentsAreSplitAtTheFirstEqualsSign) {
    const auto parsed = parseAssignment("name=a=b ");
    EXPECT_STREQ(parsed.setting->key, "name");
    EXPECT_EQ(std::get<std::string>(parsed.value), "a=b ");
    EXPECT_EQ(std::get<std::string>(parseAssignment("name=").value), "");
}

TEST(Keys, AnAssignmentWithoutKeyOrValueIsRefused) {
    EXPECT_EQ(faultOf([] { parseAssignment("name"); }), "name needs a value: name=VALUE");
    EXPECT_THAT(faultOf([] { parseAssignment("nme=Gate"); }), HasSubstr("did you mean name?"));
    EXPECT_NE(faultOf([] { parseAssignment("=Gate"); }), "");
    EXPECT_NE(faultOf([] { parseAssignment(""); }), "");
}

TEST(Keys, WhatMayBeASecretIsNotShown) {
    EXPECT_EQ(faultOf([] { parseAssignment("MARKED"); }),
              "what stands behind the camera must be of the form KEY=VALUE");
    for (const char* text : {"wifi.key=MARKED", "password=MARKED", "ddns.password=MARKED", "pasword=MARKED"}) {
        EXPECT_THAT(faultOf([&] { parseAssignment(text); }), Not(HasSubstr("MARKED")));
        EXPECT_NE(faultOf([&] { parseAssignment(text); }), "");
    }
}

TEST(Keys, ASecretComesFromItsSource) {
    setenv("QVPCTL_TEST_SECRET", "hidden", 1);
    EXPECT_EQ(std::get<Secret>(parseAssignment("wifi.key=env:QVPCTL_TEST_SECRET").value).reveal(), "hidden");
}

TEST(Keys, GroupsOfSettingsEachOnce) {
    EXPECT_THAT(groupsOf(settingsNamed({"wifi", "name", "upnp", "http-port"})),
                ElementsAre(Group::Basic, Group::Services, Group::Wifi));
}

TEST(Keys, HelpHoldsEverySetting) {
    const std::string help = settingsHelp();
    for (const client::Setting& setting : client::allSettings()) {
        for (const char* text : {setting.key, setting.summary, setting.values, setting.quirk}) {
            EXPECT_THAT(help, HasSubstr(text)) << setting.key;
        }
    }
}
