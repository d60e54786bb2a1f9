// The administrator's account: verifying a user, and a new password on its way to the store and the system.
#include <cstdio>

#include "support/handler_test.h"

using fake::Events;

namespace unit {
namespace {

class UserVerification : public BothFamilies {
protected:
    const CommandRow& row() const { return BothFamilies::row("user_verification"); }
};

TEST_P(UserVerification, TellsWhetherTheUsersGroupIsAdmin) {
    const std::pair<const char*, std::uint8_t> groups[] = {
        {"admin", 1}, {"administrators", 2}, {"admin ", 2}, {"Admin", 2}, {"adm", 2}, {"users", 2}, {"", 2}};
    for (const auto& [group, expected] : groups) {
        fake::camera().groups = {{"admin", group}, {"other", "admin"}};
        const Outcome outcome = call(row().handler, request(row()).bytes());
        EXPECT_TRUE(replies(reply(row()).put(22, {expected, 0, 0, 0}), outcome)) << group;
        EXPECT_TRUE(traces(row(), 1, outcome));
    }
}

TEST_P(UserVerification, TakesAnUnknownUserForNoAdministrator) {
    EXPECT_TRUE(replies(reply(row()).put(22, {2}), call(row().handler, request(row()).bytes())));
}

TEST_P(UserVerification, DecodesBothAgainBehindTheCheckAndThenAsksTheUserTable) {
    call(row().handler, request(row()).bytes());
    EXPECT_EQ(fake::eventsOf({"cfgRead", "Base64dec", "usrInit", "usrGetGroupName"}),
              (Events{"cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1", "Base64dec YWRtaW4",
                      "Base64dec c2VjcmV0", "Base64dec YWRtaW4", "Base64dec c2VjcmV0", "usrInit 0",
                      "usrGetGroupName admin"}));
    EXPECT_EQ(raisedFlags(), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Families, UserVerification, bothFamilies(), familyName);

std::string base64(const std::string& bytes) {
    static const char* const digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    unsigned bits = 0;
    unsigned count = 0;
    for (const char byte : bytes) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
        for (count += 8; count >= 6; count -= 6) text += digits[bits >> (count - 6) & 63];
    }
    if (count != 0) text += digits[bits << (6 - count) & 63];
    return text;
}

class ChangeAdminPassword : public BothFamilies {
protected:
    const CommandRow& row() const { return BothFamilies::row("change_admin_id_pwd"); }

    Outcome change(const std::string& password) const {
        return call(row().handler, request(row()).put(214, base64(password)).bytes());
    }

    // What a real shell hands the command as its fourth word.
    static std::string fourthWord(std::string command) {
        const std::string program = "/usr/sbin/set_passwd";
        EXPECT_EQ(command.compare(0, program.size(), program), 0);
        command.replace(0, program.size(), "take");
        const std::string script = "exec 3>&1; take() { printf %s \"$4\" >&3; }; " + command;
        std::FILE* shell = popen(script.c_str(), "r");
        std::string word;
        for (int byte; shell != nullptr && (byte = std::fgetc(shell)) != EOF;) word += static_cast<char>(byte);
        EXPECT_EQ(pclose(shell), 0);
        return word;
    }
};

TEST_P(ChangeAdminPassword, StoresItSetsTheSystemsAccountAndAsksForRestarts) {
    const Outcome outcome = change("new one");
    EXPECT_TRUE(replies(reply(row()), outcome));
    EXPECT_TRUE(traces(row(), 1, outcome));
    EXPECT_EQ(fake::eventsOf({"Base64dec", "cfgRead", "cfgWrite", "system"}),
              (Events{"cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1", "Base64dec YWRtaW4",
                      "Base64dec c2VjcmV0", "Base64dec bmV3IG9uZQ", R"(cfgWrite USER_ADMIN Password1 "new one" 1)",
                      "cfgRead USER_ADMIN Username1",
                      R"(system /usr/sbin/set_passwd -u "admin" -p "new one"  2>/dev/null 1>/dev/null)"}));
    EXPECT_EQ(raisedFlags(), std::vector<std::string>{"g_nAuthReset=1"});
}

TEST_P(ChangeAdminPassword, EscapesFourCharactersForTheShellAndNoneForTheStore) {
    const struct {
        std::string password, word;
    } rows[] = {
        {"a\"b$c", R"(a\"b\$c)"},
        {"`id`", R"(\`id\`)"},
        {R"(\)", R"(\\)"},
        {R"(\")", R"(\\\")"},
        {"a'b!c*d;e", "a'b!c*d;e"},
        {"", ""},
        {" ", " "},
        {"$(reboot)", R"(\$(reboot))"},
        {std::string(48, '"'),
         [] {
             std::string word;
             for (int n = 0; n < 48; ++n) word += "\\\"";
             return word;
         }()},
    };
    for (const auto& row : rows) {
        fake::setText("USER_ADMIN", "Password1", "secret");
        fake::clearEvents();
        change(row.password);
        EXPECT_EQ(fake::text("USER_ADMIN", "Password1"), row.password);
        EXPECT_EQ(fake::commands(),
                  (Events{"/usr/sbin/set_passwd -u \"admin\" -p \"" + row.word + "\"  2>/dev/null 1>/dev/null"}));
    }
}

TEST_P(ChangeAdminPassword, ReachesTheCommandByteForByteThroughARealShell) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
    std::uint32_t random = 12345;
    for (int more = 0; more < 500; ++more) {
        random = random * 1664525 + 1013904223;
        all += static_cast<char>(random >> 24 == 0 ? 1 : random >> 24);
    }
    for (std::size_t at = 0; at < all.size(); at += 48) {
        const std::string password = all.substr(at, 48);
        fake::setText("USER_ADMIN", "Password1", "secret");
        fake::clearEvents();
        change(password);
        EXPECT_EQ(fake::text("USER_ADMIN", "Password1"), password);
        ASSERT_EQ(fake::commands().size(), 1u);
        EXPECT_EQ(fourthWord(fake::commands()[0]), password) << "from byte " << at;
    }
}

TEST_P(ChangeAdminPassword, EndsAtTheFieldsSixtyFourthByte) {
    std::string field;
    for (int group = 0; group < 16; ++group) field += "YWFh";
    Packet packet = request(row());
    packet.put(214, field).fill(278, 746, 'Y');
    EXPECT_TRUE(replies(reply(row()), call(row().handler, packet.bytes())));
    EXPECT_EQ(fake::text("USER_ADMIN", "Password1"), std::string(48, 'a'));
}

TEST_P(ChangeAdminPassword, EndsAtTheFirstNulItDecodesTo) {
    EXPECT_TRUE(replies(reply(row()), change(std::string("ab\0cd", 5))));
    EXPECT_EQ(fake::text("USER_ADMIN", "Password1"), "ab");
    EXPECT_EQ(fake::unclearedWrites(), std::vector<std::string>{});
    EXPECT_EQ(fake::commands(), (Events{R"(/usr/sbin/set_passwd -u "admin" -p "ab"  2>/dev/null 1>/dev/null)"}));
}

TEST_P(ChangeAdminPassword, IgnoresTheFieldBeforeTheNewPassword) {
    Packet packet = request(row());
    packet.put(214, base64("next")).fill(150, 64, 'Y');
    EXPECT_TRUE(replies(reply(row()), call(row().handler, packet.bytes())));
    EXPECT_EQ(fake::text("USER_ADMIN", "Password1"), "next");
    EXPECT_EQ(fake::text("USER_ADMIN", "Username1"), "admin");
    EXPECT_EQ(fake::writes().size(), 1u);
}

TEST_P(ChangeAdminPassword, HandsTheStoredNameOnUnescaped) {
    fake::setText("USER_ADMIN", "Username1", "a$b");
    call(row().handler, request(row()).put(22, std::string("YSRi\0\0\0\0", 8)).bytes());
    EXPECT_EQ(fake::commands(), (Events{R"(/usr/sbin/set_passwd -u "a$b" -p ""  2>/dev/null 1>/dev/null)"}));
}

TEST_P(ChangeAdminPassword, IsTheOnlyOneThatVerifiesFromThenOn) {
    change("next");
    const CommandRow& verify = BothFamilies::row("user_verification");
    EXPECT_EQ(call(verify.handler, request(verify).bytes()).reply[16], 3);
    EXPECT_EQ(call(verify.handler, request(verify).put(86, base64("next") + std::string(2, '\0')).bytes()).reply[16],
              0);
}

INSTANTIATE_TEST_SUITE_P(Families, ChangeAdminPassword, bothFamilies(), familyName);

}  // namespace
}  // namespace unit
