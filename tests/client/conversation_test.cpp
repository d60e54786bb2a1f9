#include "client/conversation.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <set>

#include "client/error.h"
#include "fake_link.h"

using namespace client;
using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr Mac kMac = {{0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF}};

class ConversationTest : public testing::Test {
protected:
    Conversation with(Ipv4 address, Family family = Family::Primary) {
        return Conversation(link_, family, {kMac, address, nearInterface()}, {2s, 3},
                            [this](const std::string& note) { notes_.push_back(note); });
    }

    // A reply of 38 bytes to what was sent, changed before it goes out.
    static Bytes replyFor(
        const Bytes& request, const std::function<void(Bytes&)>& change = [](Bytes&) {}) {
        Bytes reply = replyTo(static_cast<uint16_t>(request[4] | request[5] << 8), 38);
        reply[2] = request[2];
        reply[3] = request[3];
        change(reply);
        return reply;
    }

    std::vector<std::string> receivers() const {
        std::vector<std::string> names;
        for (const FakeLink::Sent& sent : link_.sent) names.push_back(sent.to);
        return names;
    }

    FakeLink link_;
    std::vector<std::string> notes_;
};

TEST_F(ConversationTest, FillsInTheHeaderAndNothingElse) {
    with({{192, 0, 2, 10}}).ask(0x0103, Bytes(150, 0x55), 38);
    Bytes expected(150, 0x55);
    put(expected, 0, {0xFD, 0xFD, link_.sent[0].bytes[2], link_.sent[0].bytes[3], 0x03, 0x01});
    put(expected, 6, {0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF, 0, 0, 0, 0, 0x77, 0x77, 2, 0, 0x80, 0});
    EXPECT_EQ(link_.sent[0].bytes, expected);
    with({{192, 0, 2, 10}}, Family::Landap).ask(0x00A2, Bytes(22), 38);
    EXPECT_EQ(link_.sent.back().bytes[18], 1);
}

TEST_F(ConversationTest, ReturnsTheReplyOfTheFirstTry) {
    link_.answer = [&](const FakeLink::Sent& sent) { link_.arrive(10ms, replyFor(sent.bytes)); };
    const auto reply = with({{192, 0, 2, 10}}).ask(0x00A2, Bytes(150), 38);
    ASSERT_TRUE(reply);
    EXPECT_EQ(*reply, replyFor(link_.sent[0].bytes));
    EXPECT_THAT(receivers(), ElementsAre("192.0.2.10"));
    EXPECT_EQ(link_.elapsed(), 10ms);
    EXPECT_TRUE(notes_.empty());
}

TEST_F(ConversationTest, ASilentCameraIsAskedAgainByBroadcastWithTheSameBytes) {
    EXPECT_EQ(with({{192, 0, 2, 10}}).ask(0x00A2, Bytes(150), 38), std::nullopt);
    EXPECT_THAT(receivers(), ElementsAre("192.0.2.10", "all on eth0", "all on eth0"));
    EXPECT_EQ(link_.sent[1].bytes, link_.sent[0].bytes);
    EXPECT_EQ(link_.sent[2].bytes, link_.sent[0].bytes);
    EXPECT_EQ(link_.sent[1].at, 2s);
    EXPECT_EQ(link_.sent[2].at, 4s);
    EXPECT_EQ(link_.elapsed(), 6s);
}

TEST_F(ConversationTest, EachQuestionHasASequenceOfItsOwn) {
    Conversation conversation = with({{192, 0, 2, 10}});
    std::set<std::pair<uint8_t, uint8_t>> sequences;
    for (int i = 0; i < 20; i++) {
        conversation.ask(0x00A2, Bytes(150), 38);
        sequences.insert({link_.sent.back().bytes[2], link_.sent.back().bytes[3]});
    }
    EXPECT_GT(sequences.size(), 15u);
}

TEST_F(ConversationTest, ACameraThatIsNotNearIsAskedByBroadcastAtOnce) {
    for (const Ipv4 address : {Ipv4{{10, 0, 0, 1}}, Ipv4{{0, 0, 0, 0}}}) {
        link_.sent.clear();
        with(address).ask(0x00A2, Bytes(150), 38);
        EXPECT_THAT(receivers(), ElementsAre("all on eth0", "all on eth0", "all on eth0"));
    }
}

TEST_F(ConversationTest, FollowsTheCameraToItsNewAddress) {
    Conversation conversation = with({{10, 0, 0, 1}});
    conversation.moveTo({{192, 0, 2, 77}});
    conversation.ask(0x00A2, Bytes(150), 38);
    EXPECT_EQ(receivers()[0], "192.0.2.77");
    EXPECT_EQ(conversation.target().address.bytes[3], 77);
}

TEST_F(ConversationTest, ALateAnswerToTheFirstTryCounts) {
    link_.answer = [&](const FakeLink::Sent& sent) {
        if (link_.sent.size() == 1) link_.arrive(3s, replyFor(sent.bytes));
    };
    EXPECT_TRUE(with({{192, 0, 2, 10}}).ask(0x00A2, Bytes(150), 38));
    EXPECT_EQ(link_.sent.size(), 2u);
    EXPECT_EQ(link_.elapsed(), 3s);
}

struct Forgery {
    const char* name;
    std::function<void(Bytes&)> change;
};

static void PrintTo(const Forgery& forgery, std::ostream* stream) { *stream << forgery.name; }

class ConversationForgeries : public ConversationTest, public testing::WithParamInterface<Forgery> {};

TEST_P(ConversationForgeries, AreIgnoredAndTheReplyBehindThemTaken) {
    link_.answer = [&](const FakeLink::Sent& sent) {
        link_.arrive(10ms, replyFor(sent.bytes, GetParam().change));
        link_.arrive(20ms, replyFor(sent.bytes));
    };
    const auto reply = with({{192, 0, 2, 10}}).ask(0x00A2, Bytes(150), 38);
    EXPECT_EQ(link_.elapsed(), 20ms);
    ASSERT_TRUE(reply);
    EXPECT_EQ(*reply, replyFor(link_.sent[0].bytes));
}

static std::function<void(Bytes&)> flip(size_t offset) {
    return [offset](Bytes& reply) { reply[offset] ^= 1; };
}

static const Forgery kForgeries[] = {
    {"magic", flip(0)},
    {"magic's second byte", flip(1)},
    {"a request",
     [](Bytes& reply) {
         put(reply, 0, {0xFD, 0xFD});
     }},
    {"sequence", flip(2)},
    {"sequence's second byte", flip(3)},
    {"opcode", flip(4)},
    {"opcode's second byte", flip(5)},
    {"MAC", flip(6)},
    {"MAC's last byte", flip(11)},
    {"family", [](Bytes& reply) { reply[18] = 1; }},
    {"family's second byte", flip(19)},
    {"payload length", flip(20)},
    {"payload length's second byte", flip(21)},
    {"one byte less", [](Bytes& reply) { reply.pop_back(); }},
    {"one byte less, and told", [](Bytes& reply) { reply.pop_back(), reply[20]--; }},
    {"one byte more, and told", [](Bytes& reply) { reply.push_back(0), reply[20]++; }},
    {"a header alone", [](Bytes& reply) { reply.resize(22), reply[20] = 0; }},
    {"less than a header", [](Bytes& reply) { reply.resize(21); }},
    {"nothing", [](Bytes& reply) { reply.clear(); }},
};
INSTANTIATE_TEST_SUITE_P(Forgeries, ConversationForgeries, testing::ValuesIn(kForgeries));

TEST_F(ConversationTest, ASenderThatIsNotTheAddressItClaimsIsNoted) {
    link_.answer = [&](const FakeLink::Sent& sent) { link_.arrive(10ms, replyFor(sent.bytes), {{192, 0, 2, 66}}); };
    EXPECT_TRUE(with({{192, 0, 2, 10}}).ask(0x00A2, Bytes(150), 38));
    EXPECT_THAT(notes_, ElementsAre("the reply came from 192.0.2.66 but says it is from 192.0.2.10"));
}

TEST_F(ConversationTest, AnAddressThatCannotBeReachedLeavesTheBroadcast) {
    link_.sendError = EHOSTUNREACH;
    link_.answer = [&](const FakeLink::Sent& sent) { link_.arrive(10ms, replyFor(sent.bytes)); };
    EXPECT_TRUE(with({{192, 0, 2, 10}}).ask(0x00A2, Bytes(150), 38));
    EXPECT_THAT(receivers(), ElementsAre("all on eth0"));
}

TEST_F(ConversationTest, ABroadcastThatCannotBeSentIsAnErrorOfThisMachine) {
    link_.broadcastError = [](const std::string&) { return ENETUNREACH; };
    try {
        with({{10, 0, 0, 1}}).ask(0x00A2, Bytes(150), 38);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::Local);
        EXPECT_STREQ(error.what(), "interface eth0: cannot send: Network is unreachable");
    }
}

TEST_F(ConversationTest, ACameraThatSharesItsAddressIsAskedByBroadcastUntilItHasOneOfItsOwn) {
    const Target target{kMac, {{192, 0, 2, 10}}, nearInterface(), true};
    Conversation conversation(link_, Family::Primary, target, {2s, 1}, [](const std::string&) {});
    conversation.ask(0x00A2, Bytes(150), 38);
    conversation.moveTo({{192, 0, 2, 10}});
    conversation.ask(0x00A2, Bytes(150), 38);
    conversation.moveTo({{192, 0, 2, 11}});
    conversation.ask(0x00A2, Bytes(150), 38);
    EXPECT_THAT(receivers(), ElementsAre("all on eth0", "all on eth0", "192.0.2.11"));
}
