#include "client/commands/survey.h"

#include <gmock/gmock.h>

#include "datagrams.h"

using namespace client;

static Bytes surveyReply() { return replyTo(0x00AE, 746); }

static void putSite(Bytes& reply, size_t slot, const std::string& ssid, const Bytes& signalTypeAndCodes) {
    putText(reply, 22 + 36 * slot, ssid);
    put(reply, 22 + 36 * slot + 33, signalTypeAndCodes);
}

static std::vector<std::string> namesOf(const Survey& survey) {
    std::vector<std::string> names;
    for (const Site& site : survey.sites) names.push_back(site.ssid);
    return names;
}

TEST(Survey, HoldsEveryFieldOfASite) {
    Bytes reply = surveyReply();
    putSite(reply, 0, "Workshop", {81, 0x30, 0x64});
    const Survey survey = decodeSurvey(reply);
    ASSERT_EQ(survey.sites.size(), 1u);
    EXPECT_EQ(survey.sites[0].ssid, "Workshop");
    EXPECT_EQ(survey.sites[0].signal, 81);
    EXPECT_FALSE(survey.sites[0].adHoc);
    EXPECT_EQ(survey.sites[0].security, (WifiSecurity{4, 3}));
    EXPECT_EQ(survey.sites[0].channel, 6);
    EXPECT_TRUE(survey.isComplete);
}

TEST(Survey, SecurityThatTheCameraDoesNotKnowIsNone) {
    Bytes reply = surveyReply();
    putSite(reply, 0, "Odd", {30, 0xF1, 0x1F});
    putSite(reply, 1, "Old printer", {20, 0x11, 0x30});
    const Survey survey = decodeSurvey(reply);
    EXPECT_EQ(survey.sites[0].security, std::nullopt);
    EXPECT_TRUE(survey.sites[0].adHoc);
    EXPECT_EQ(survey.sites[0].channel, 1);
    EXPECT_EQ(survey.sites[1].security, (WifiSecurity{0, 1}));
}

TEST(Survey, LeavesOutPaddingAndEmptySlotsButNotHiddenNetworks) {
    Bytes reply = surveyReply();
    putSite(reply, 0, "A", {50, 0x00, 0x10});
    putSite(reply, 1, "", {20, 0x40, 0x94});
    for (size_t slot = 2; slot < 10; slot++) putSite(reply, slot, "", {0x00, 0xF1, 0x0F});
    putSite(reply, 10, "", {0, 0x40, 0x94});  // hidden, and too weak for a percent
    EXPECT_THAT(namesOf(decodeSurvey(reply)), testing::ElementsAre("A", "", ""));
    EXPECT_TRUE(decodeSurvey(surveyReply()).sites.empty());
}

TEST(Survey, TheStrongestComesFirstAndEqualsKeepTheirOrder) {
    Bytes reply = surveyReply();
    const std::pair<const char*, uint8_t> sites[] = {
        {"weak", 10}, {"first", 60}, {"strong", 99}, {"second", 60}, {"none", 0}};
    for (size_t i = 0; i < std::size(sites); i++) putSite(reply, i, sites[i].first, {sites[i].second, 0, 0x10});
    EXPECT_THAT(namesOf(decodeSurvey(reply)), testing::ElementsAre("strong", "first", "second", "weak", "none"));
}

TEST(Survey, IsIncompleteWhenFullAndMarked) {
    Bytes reply = surveyReply();
    for (size_t slot = 0; slot < 20; slot++) putSite(reply, slot, "network", {50, 0x30, 0x64});
    EXPECT_TRUE(decodeSurvey(reply).isComplete);
    put(reply, 744, {0xFF, 0xFF});
    EXPECT_EQ(decodeSurvey(reply).sites.size(), 20u);
    EXPECT_FALSE(decodeSurvey(reply).isComplete);
    put(reply, 22 + 36 * 19, Bytes(36));
    putSite(reply, 19, "", {0x00, 0xF1, 0x0F});
    EXPECT_TRUE(decodeSurvey(reply).isComplete);
}

TEST(Survey, ANameWithoutNulEndsAt32Bytes) {
    Bytes reply = surveyReply();
    putSite(reply, 0, std::string(33, 'x'), {50, 0x30, 0x64});
    EXPECT_EQ(decodeSurvey(reply).sites[0].ssid, std::string(32, 'x'));
    EXPECT_THROW(decodeSurvey(replyTo(0x00AE, 745)), std::length_error);
}
