// The administrator's name and password, as a request carries them and as the store holds them.
#include "util/credentials.h"

#include "support/handler_test.h"

namespace unit {
namespace {

using testing::ElementsAre;

class Credentials : public HandlerTest {
protected:
    void store(const std::string& user, const std::string& password) {
        fake::setText("USER_ADMIN", "Username1", user);
        fake::setText("USER_ADMIN", "Password1", password);
    }
};

TEST_F(Credentials, ComparesTheDecodedTextsWithTheStoredOnes) {
    const struct {
        const char *user, *password;
        int expected;
    } rows[] = {
        {"YWRtaW4=", "c2VjcmV0", 0},      {"YWRtaW4", "c2VjcmV0", 0},    // with and without a pad
        {"YWRtaW4=", "c2VjcmV1", -1},     {"YWRtaW5=", "c2VjcmV0", 0},   // the bits behind the last byte do not count
        {"YWRtaW4=", "U0VDUkVU", -1},     {"QURNSU4=", "c2VjcmV0", -1},  // other case
        {"YWRtaW4=", "c2VjcmV0IA==", -1}, {"IGFkbWlu", "c2VjcmV0", -1},  // blanks count
        {"c2VjcmV0", "YWRtaW4=", -1},     {"", "", -1},
        {nullptr, "c2VjcmV0", -1},        {"YWRtaW4=", nullptr, -1},
        {nullptr, nullptr, -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(checkAuthentication(row.user, row.password), row.expected)
            << testing::PrintToString(row.user) << " " << testing::PrintToString(row.password);
    }
}

TEST_F(Credentials, AreAllReadThenDecodedThenCompared) {
    for (const char* user : {"YWRtaW4", "cm9vdA"}) {
        fake::clearEvents();
        checkAuthentication(user, "c2VjcmV0");
        EXPECT_THAT(fake::events(), ElementsAre("cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1",
                                                std::string("Base64dec ") + user, "Base64dec c2VjcmV0"));
    }
}

TEST_F(Credentials, OfAStoreWithoutThemAreEmpty) {
    fake::erase("USER_ADMIN", "Username1");
    fake::erase("USER_ADMIN", "Password1");
    EXPECT_EQ(checkAuthentication("", ""), 0);
    EXPECT_EQ(checkAuthentication("=", "!"), 0);
    EXPECT_EQ(checkAuthentication("YQ==", ""), -1);
    EXPECT_EQ(checkAuthentication("", "YQ=="), -1);
    EXPECT_EQ(checkAuthentication(nullptr, ""), -1);
    EXPECT_EQ(checkAuthentication("", nullptr), -1);
}

TEST_F(Credentials, AreJudgedAnewEachTime) {
    for (int round = 0; round < 100; ++round) EXPECT_EQ(checkAuthentication("YWRtaW4=", "YQ=="), -1);
    EXPECT_EQ(checkAuthentication("YWRtaW4=", "c2VjcmV0"), 0);
}

class CredentialBlock : public BothFamilies {};

TEST_P(CredentialBlock, OfAllZeroBytesMatchesEmptyCredentials) {
    fake::erase("USER_ADMIN", "Username1");
    fake::setText("USER_ADMIN", "Password1", "");
    const Packet packet = request(row("commit_setting")).fill(22, 128, 0);
    EXPECT_TRUE(replies(reply(row("commit_setting")), call(row("commit_setting").handler, packet.bytes())));
}

TEST_P(CredentialBlock, FieldsEndAtTheirSixtyFourthByte) {
    const std::string name(48, 'a'), password(48, 'b');
    fake::setText("USER_ADMIN", "Username1", name);
    fake::setText("USER_ADMIN", "Password1", password);
    std::string first, second;
    for (int group = 0; group < 16; ++group) first += "YWFh", second += "YmJi";
    const Packet packet = request(row("commit_setting")).put(22, first).put(86, second).fill(150, 874, 'Y');
    EXPECT_TRUE(replies(reply(row("commit_setting")), call(row("commit_setting").handler, packet.bytes())));
    EXPECT_THAT(fake::eventsOf({"Base64dec"}), ElementsAre("Base64dec " + first, "Base64dec " + second));
}

TEST_P(CredentialBlock, StoredTextsOf255BytesAreComparedWhole) {
    fake::setText("USER_ADMIN", "Username1", std::string(255, 'a'));
    std::string longest;
    for (int group = 0; group < 16; ++group) longest += "YWFh";
    const Packet packet = request(row("commit_setting")).put(22, longest);
    const Outcome outcome = call(row("commit_setting").handler, packet.bytes());
    EXPECT_TRUE(replies(reply(row("commit_setting")).put(16, {3, 0}), outcome));
}

INSTANTIATE_TEST_SUITE_P(Families, CredentialBlock, bothFamilies(), familyName);

}  // namespace
}  // namespace unit
