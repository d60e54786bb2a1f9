#include "client/commands/account.h"

#include <gtest/gtest.h>

#include "datagrams.h"

using namespace client;

TEST(Account, PasswordChangeCarriesOldAndNew) {
    Bytes expected = protectedBytes(278);
    putText(expected, 214, "bmV3");
    EXPECT_EQ(encodePasswordChange({"admin", Secret("secret")}, Secret("new")), expected);
}

TEST(Account, UserClassOneIsTheAdministrator) {
    for (const uint8_t code : Bytes{0, 1, 2, 255}) {
        Bytes reply = replyTo(0x00A3, 26);
        reply[22] = code;
        EXPECT_EQ(decodeUserClass(reply) == UserClass::Administrator, code == 1) << int{code};
    }
}

TEST(Account, ATruncatedReplyIsNotRead) { EXPECT_THROW(decodeUserClass(replyTo(0x00A3, 25)), std::length_error); }
