// Who gets in, without a network: what the server asks before it reads a body.
#include "qvpctl/web/gate.h"

#include <gtest/gtest.h>

#include "qvpctl/web/token.h"

namespace {

constexpr uint16_t kPort = 4711;
const WebSecrets kSecrets = {"token-of-the-address", "secret-of-the-cookie"};

struct Request : WebRequest {
    Request(const char* verb, const char* where) {
        method = verb;
        path = where;
        headers = {{"Host", "127.0.0.1:4711"}};
        cookie = kSecrets.cookie;
    }

    Request& with(const char* name, const char* value) {
        headers.emplace_back(name, value);
        return *this;
    }
};

unsigned statusOf(const WebRequest& request) {
    Gate gate(kPort, kSecrets);
    const auto answer = gate.check(request);
    return answer ? answer->status : 200;
}

TEST(Gate, LetsItsOwnPageIn) {
    EXPECT_EQ(statusOf(Request("GET", "/")), 200u);
    EXPECT_EQ(statusOf(Request("GET", "/api/session").with("Origin", "http://localhost:4711")), 200u);
    Request post("POST", "/api/search");
    post.with("X-Qvpctl", "1").with("Content-Type", "application/json").with("Content-Length", "1048576");
    EXPECT_EQ(statusOf(post), 200u);
}

TEST(Gate, TakesTheTokenOnce) {
    Gate gate(kPort, kSecrets);
    Request request("GET", "/");
    request.cookie = "";
    request.token = kSecrets.token;
    const auto first = gate.check(request);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->status, 200u);
    EXPECT_EQ(first->headers[0].second, "qvpctl_4711=secret-of-the-cookie; HttpOnly; SameSite=Strict; Path=/");
    EXPECT_EQ(gate.check(request)->status, 403u);
    request.token = "";
    EXPECT_EQ(gate.check(request)->status, 403u);
    EXPECT_EQ(gate.secrets().token, "");
}

TEST(Gate, ATokenOfAnotherPathIsNone) {
    Gate gate(kPort, kSecrets);
    Request request("GET", "/page.css");
    request.cookie = "";
    request.token = kSecrets.token;
    EXPECT_EQ(gate.check(request)->status, 403u);
    EXPECT_EQ(gate.secrets().token, kSecrets.token);
}

TEST(Gate, NothingIsNoSecret) {
    EXPECT_TRUE(isSameToken("same", "same"));
    EXPECT_FALSE(isSameToken("", ""));
    EXPECT_FALSE(isSameToken("sam", "same"));
    EXPECT_FALSE(isSameToken("same!", "same"));
    EXPECT_FALSE(isSameToken("samf", "same"));
    Gate gate(kPort, {});
    Request request("GET", "/");
    request.cookie = "";
    EXPECT_EQ(gate.check(request)->status, 403u);
}

TEST(Gate, TokensAreLongAndNeverTheSame) {
    EXPECT_EQ(randomToken().size(), 64u);
    EXPECT_NE(randomToken(), randomToken());
    EXPECT_EQ(randomToken().find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST(Gate, EachValueOfAHeaderCounts) {
    EXPECT_EQ(statusOf(Request("GET", "/api/session").with("host", "127.0.0.1:4711")), 403u);
    EXPECT_EQ(statusOf(Request("GET", "/api/session")
                           .with("Origin", "http://127.0.0.1:4711")
                           .with("origin", "http://evil.example")),
              403u);
    EXPECT_EQ(
        statusOf(Request("GET", "/api/session").with("Sec-Fetch-Site", "none").with("sec-fetch-site", "cross-site")),
        403u);
}

TEST(Gate, ALengthIsANumber) {
    for (const char* length : {"1048577", "-1", "1x", " 1", "0x10", "99999999999999999999999"}) {
        Request post("POST", "/api/search");
        post.with("X-Qvpctl", "1").with("Content-Type", "application/json").with("Content-Length", length);
        EXPECT_EQ(statusOf(post), 413u) << length;
    }
}

}  // namespace
