#include "client/login.h"

#include <gtest/gtest.h>

#include "client/commands/account.h"
#include "client/error.h"
#include "datagrams.h"

using namespace client;

// The text of the Error BadValue that this throws; "" when it throws none.
template <typename Work>
static std::string faultOf(Work work) try {
    work();
    return "";
} catch (const Error& error) {
    EXPECT_EQ(error.kind(), ErrorKind::BadValue);
    return error.what();
}

TEST(Login, StandsAsBase64BehindTheHeader) {
    Bytes expected(150);
    putText(expected, 22, "YWRtaW4=");
    putText(expected, 86, "c2VjcmV0");
    EXPECT_EQ(protectedRequest(Login{"admin", Secret("secret")}), expected);
}

TEST(Login, FillsItsFieldsWith48Bytes) {
    const std::string name(48, 'u'), password(48, 'p');
    Bytes expected(150);
    for (size_t i = 0; i < 16; i++) putText(expected, 22 + 4 * i, "dXV1");
    for (size_t i = 0; i < 16; i++) putText(expected, 86 + 4 * i, "cHBw");
    EXPECT_EQ(protectedRequest(Login{name, Secret(password)}), expected);
}

TEST(Login, LongerThan48BytesIsRefused) {
    EXPECT_EQ(faultOf([] {
                  protectedRequest(Login{std::string(49, 'u'), Secret("p")});
              }),
              "the user name is longer than the 48 bytes that a request can carry");
    EXPECT_EQ(faultOf([] {
                  protectedRequest(Login{"u", Secret(std::string(49, 'p'))});
              }),
              "the password is longer than the 48 bytes that a request can carry");
}

TEST(Login, WithANulIsRefused) {
    EXPECT_EQ(faultOf([] {
                  protectedRequest(Login{std::string("u\0x", 3), Secret("p")});
              }),
              "the user name holds a NUL byte");
    EXPECT_EQ(faultOf([] {
                  protectedRequest(Login{"u", Secret(std::string("\0", 1))});
              }),
              "the password holds a NUL byte");
}

TEST(Login, NoFaultHoldsTheSecret) {
    const std::string mark = "MARKED";
    const std::string secrets[] = {mark + std::string(43, 'p'), mark + std::string("\0", 1)};
    for (const std::string& secret : secrets) {
        const std::string login = faultOf([&] { protectedRequest(Login{"admin", Secret(secret)}); });
        const std::string change = faultOf([&] { encodePasswordChange(Login{"admin", Secret("p")}, Secret(secret)); });
        for (const std::string& fault : {login, change}) {
            EXPECT_NE(fault, "");
            EXPECT_EQ(fault.find(mark), fault.npos) << fault;
        }
    }
}

template <typename T>
concept Shown = requires(std::ostream& stream, const T& value) {
    stream << value;
};
template <typename T>
concept Compared = requires(const T& one, const T& other) {
    one == other;
};

TEST(Secret, IsNeitherShownNorComparedNorConverted) {
    EXPECT_TRUE(Shown<std::string> && Compared<std::string>);
    EXPECT_FALSE(Shown<Secret>);
    EXPECT_FALSE(Compared<Secret>);
    EXPECT_FALSE((std::is_convertible_v<Secret, std::string> || std::is_convertible_v<std::string, Secret>));
}
