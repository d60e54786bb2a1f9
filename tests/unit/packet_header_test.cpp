// The steps that open every handler of both families: magic, family, addressing, capacity, reply header, credentials.
#include "support/handler_test.h"

namespace unit {
namespace {

// Base64 in the two credential fields; the camera's are admin and secret.
struct WrongCredentials {
    std::string user, password;
};

const WrongCredentials kWrongCredentials[] = {
    {"YWRtaW4=", "U2VjcmV0"},      // admin, Secret
    {"YWRtaW4=", "c2VjcmU="},      // admin, secre
    {"YWRtaW4=", "c2VjcmV0cw=="},  // admin, secrets
    {"YWRtaW4=", ""},              //
    {"QWRtaW4=", "c2VjcmV0"},      // Admin, secret
    {"", "c2VjcmV0"},              //
    {"", ""},                      //
    {"admin", "secret"},           // not in Base64
};

class EveryCommand : public HandlerTest, public testing::WithParamInterface<CommandRow> {
protected:
    const CommandRow& row() const { return GetParam(); }

    // No reply, the entry's trace line and `rejections` more, and nothing asked of the camera.
    void expectRejected(const Packet& packet, std::size_t rejections, const std::string& what) {
        fake::clearEvents();
        const Outcome outcome = call(row().handler, packet.bytes());
        EXPECT_TRUE(silent(outcome)) << what;
        EXPECT_TRUE(traces(row(), 1 + rejections, outcome)) << what;
        EXPECT_THAT(fake::events(), testing::IsEmpty()) << what;
        EXPECT_THAT(raisedFlags(), testing::IsEmpty()) << what;
    }

    void expectServed(const Packet& packet, const std::string& what) {
        const Outcome outcome = call(row().handler, packet.bytes());
        EXPECT_EQ(outcome.length, row().replyLength) << what;
    }
};

// A Base64 text without its padding, which is as far as it is decoded.
std::string unpadded(const std::string& text) { return text.substr(0, text.find('=')); }

TEST_P(EveryCommand, AnswersWithAReplyHeaderAndItsFixedLength) {
    const Outcome outcome = call(row().handler, request(row()).bytes());
    ASSERT_EQ(outcome.length, row().replyLength);
    Packet expected(22);
    expected.put(0, reply(row()).first(22)).put(16, {outcome.reply[16], 0});
    EXPECT_TRUE(sameBytes(expected.bytes(), {outcome.reply.begin(), outcome.reply.begin() + 22}));
    EXPECT_THAT(outcome.reply[16], testing::AnyOf(0, 2));
}

TEST_P(EveryCommand, CopiesSequenceAndOpcodeByteForByte) {
    Packet packet = request(row());
    packet.put(2, {0xFE, 0xFF, 0x5A, 0xA5});
    const Outcome outcome = call(row().handler, packet.bytes());
    ASSERT_EQ(outcome.length, row().replyLength);
    EXPECT_TRUE(sameBytes({0xFE, 0xFF, 0x5A, 0xA5}, {outcome.reply.begin() + 2, outcome.reply.begin() + 6}));
}

TEST_P(EveryCommand, AnswersWithAddressZeroWhenTheInterfaceHasNone) {
    fake::camera().interfaces["eth0"].address.reset();
    const Outcome outcome = call(row().handler, request(row()).bytes());
    ASSERT_EQ(outcome.length, row().replyLength);
    EXPECT_TRUE(sameBytes({0, 0, 0, 0}, {outcome.reply.begin() + 12, outcome.reply.begin() + 16}));
}

TEST_P(EveryCommand, RejectsAnyOtherMagic) {
    const std::pair<std::uint8_t, std::uint8_t> magics[] = {{0xFE, 0xFD}, {0xFD, 0xFE}, {0xEE, 0xFE},
                                                            {0xFF, 0xFF}, {0, 0xFD},    {0xFD, 0}};
    for (const auto& [first, second] : magics) {
        expectRejected(request(row()).put(0, {first, second}), 1, "magic " + std::to_string(first));
    }
}

TEST_P(EveryCommand, RejectsEveryOtherProtocol) {
    const auto other = static_cast<std::uint8_t>(3 - row().family->protocol);
    const std::uint8_t protocol = row().family->protocol;
    const std::pair<std::uint8_t, std::uint8_t> protocols[] = {
        {other, 0}, {0, 0}, {3, 0}, {0xFF, 0xFF}, {0, protocol}, {protocol, 1}, {protocol, 0x80}};
    for (const auto& [first, second] : protocols) {
        expectRejected(request(row()).put(18, {first, second}), 1,
                       "protocol " + std::to_string(first) + "," + std::to_string(second));
    }
}

TEST_P(EveryCommand, ChecksTheMagicBeforeTheProtocolAndThatBeforeTheMac) {
    expectRejected(request(row()).put(0, {0, 0}).put(18, {9, 9}).put(6, {9}), 1, "all wrong");
    expectRejected(request(row()).put(18, {9, 9}).put(6, {9}), 1, "protocol and MAC wrong");
}

TEST_P(EveryCommand, RejectsAMacThatDiffersInOneByte) {
    for (std::size_t at = 6; at < 12; ++at) {
        for (const std::uint8_t byte : Bytes{0xAB, 0x01}) {
            expectRejected(request(row()).put(at, {byte}), 1, "byte " + std::to_string(at));
        }
    }
}

TEST_P(EveryCommand, LooksAtTheSelectorOnlyWhereItMayBeBroadcastTo) {
    const std::pair<std::uint8_t, std::uint8_t> odd[] = {{1, 0},       {2, 0},    {0x76, 0x77}, {0x78, 0x77},
                                                         {0x77, 0x76}, {0x77, 0}, {0, 0x77},    {0xFF, 0xFF}};
    for (const auto& [first, second] : odd) {
        const Packet packet = request(row()).put(16, {first, second});
        const std::string what = "selector " + std::to_string(first) + "," + std::to_string(second);
        if (row().addressed == Addressed::ByMac) {
            expectServed(packet, what);
        } else {
            expectRejected(packet, 0, what);
        }
    }
    expectServed(request(row()).put(16, {0x77, 0x77}), "by MAC");
    expectServed(request(row()).put(16, {0, 0}), "selector 0");
}

TEST_P(EveryCommand, TakesOnlyTheWholeBroadcastForm) {
    Packet broadcast = request(row());
    broadcast.fill(6, 6, 0xFF);
    if (row().addressed == Addressed::ByMac) return expectRejected(broadcast, 1, "broadcast");
    expectServed(broadcast, "broadcast");
    expectRejected(Packet(broadcast).put(16, {0x77, 0x77}), 1, "broadcast under selector 0x7777");
    for (std::size_t at = 12; at < 16; ++at) {
        expectRejected(Packet(broadcast).put(at, {1}), 1, "address byte " + std::to_string(at));
    }
    for (std::size_t at = 6; at < 12; ++at) {
        expectRejected(Packet(broadcast).put(at, {0xFE}), 1, "MAC byte " + std::to_string(at));
    }
}

TEST_P(EveryCommand, IgnoresTheAddressOfARequestToItsMac) {
    for (const std::uint8_t selector : Bytes{0x00, 0x77}) {
        expectServed(request(row()).put(12, {1, 2, 3, 4}).put(16, {selector, selector}), "address 1.2.3.4");
    }
}

TEST_P(EveryCommand, NeedsRoomForItsReply) {
    for (const int capacity : {row().replyLength - 1, 22, 21, 0, -1}) {
        fake::clearEvents();
        const Outcome outcome = call(row().handler, request(row()).bytes(), capacity);
        EXPECT_TRUE(silent(outcome)) << capacity;
        EXPECT_TRUE(traces(row(), 1, outcome)) << capacity;
        EXPECT_THAT(fake::events(), testing::IsEmpty()) << capacity;
        EXPECT_THAT(raisedFlags(), testing::IsEmpty()) << capacity;
    }
    EXPECT_EQ(call(row().handler, request(row()).bytes(), row().replyLength).length, row().replyLength);
}

// The header is filled before the credentials are read, and nothing comes behind them.
TEST_P(EveryCommand, AnswersWrongCredentialsWithStatusThreeAndAZeroPayload) {
    const Packet expected = reply(row()).put(16, {3, 0});
    for (const WrongCredentials& wrong : kWrongCredentials) {
        Packet packet = request(row());
        packet.fill(22, 128, 0).put(22, wrong.user).put(86, wrong.password).put(20, {1});
        fake::clearEvents();
        const Outcome outcome = call(row().handler, packet.bytes());
        if (row().needs == Needs::Nothing) {
            EXPECT_NE(outcome.reply[16], 3);
            EXPECT_THAT(fake::events(), testing::Not(testing::Contains(testing::HasSubstr("USER_ADMIN"))));
            continue;
        }
        EXPECT_TRUE(replies(expected, outcome)) << wrong.user << " " << wrong.password;
        EXPECT_TRUE(traces(row(), 1, outcome));
        EXPECT_EQ(fake::events(),
                  (fake::Events{"net_get_ifaddr eth0", "cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1",
                                "Base64dec " + unpadded(wrong.user), "Base64dec " + unpadded(wrong.password)}));
        EXPECT_THAT(raisedFlags(), testing::IsEmpty());
    }
}

TEST_P(EveryCommand, SurvivesADatagramWithoutASingleNul) {
    for (const std::uint8_t byte : Bytes{0xFF, 0x41, 0x22, 0x30}) {
        Packet packet(1024);
        packet.fill(0, 1024, byte).put(0, request(row()).first(20));
        expectServed(packet, "wrong credentials");
        packet.put(22, std::string("YWRtaW4=")).put(30, {0}).put(86, std::string("c2VjcmV0")).put(94, {0});
        expectServed(packet, "right credentials");
    }
}

INSTANTIATE_TEST_SUITE_P(Header, EveryCommand, testing::ValuesIn(allCommands()), rowName);

}  // namespace
}  // namespace unit
