// Which commands each family says it serves, and to whom.
#include "support/handler_test.h"

namespace unit {
namespace {

const Bytes kPrimaryList{0xA6, 0, 0xA7, 0, 0xA8, 0, 0xA9, 0, 0xAE, 0, 0xAF, 0, 0xB0, 0, 0xB1, 0, 0xC0, 0};
const Bytes kLandapList{0xA6, 0, 0xA7, 0, 0xA8, 0, 0xA9, 0, 0xAB, 0, 0xAC, 0,
                        0xAD, 0, 0xAE, 0, 0xAF, 0, 0xB0, 0, 0xB1, 0, 0xC0, 0};

class SupportedFunctions : public HandlerTest {
protected:
    static const CommandRow& primary() { return command(primaryFamily(), "query_support_fun"); }
    static const CommandRow& landap() { return command(landapFamily(), "query_support_fun"); }
};

TEST_F(SupportedFunctions, AreNineInThePrimaryFamily) {
    const Outcome outcome = call(primary().handler, request(primary()).bytes());
    EXPECT_TRUE(replies(reply(primary()).put(22, kPrimaryList), outcome));
    EXPECT_TRUE(traces(primary(), 1, outcome));
}

TEST_F(SupportedFunctions, AreTwelveInTheLandapFamily) {
    const Outcome outcome = call(landap().handler, request(landap()).bytes());
    EXPECT_TRUE(replies(reply(landap()).put(22, kLandapList), outcome));
    EXPECT_TRUE(traces(landap(), 1, outcome));
}

TEST_F(SupportedFunctions, AreToldToABroadcastInThePrimaryFamilyOnly) {
    const Outcome primaryOutcome = call(primary().handler, request(primary()).fill(6, 6, 0xFF).bytes());
    EXPECT_TRUE(replies(reply(primary()).put(22, kPrimaryList), primaryOutcome));
    const Outcome landapOutcome = call(landap().handler, request(landap()).fill(6, 6, 0xFF).bytes());
    EXPECT_TRUE(silent(landapOutcome));
    EXPECT_TRUE(traces(landap(), 2, landapOutcome));
}

TEST_F(SupportedFunctions, NeedNoCredentialsInThePrimaryFamily) {
    Packet noise = request(primary());
    noise.fill(20, 1004, 0xFF);
    EXPECT_TRUE(replies(reply(primary()).put(22, kPrimaryList), call(primary().handler, noise.bytes())));
    EXPECT_THAT(fake::events(), testing::ElementsAre("net_get_ifaddr eth0"));
}

TEST_F(SupportedFunctions, NeedCredentialsInTheLandapFamilyOnceThereIsAPayload) {
    const Packet granted = reply(landap()).put(22, kLandapList);
    const Packet refused = reply(landap()).put(16, {3});
    const std::pair<std::uint8_t, std::uint8_t> lengths[] = {{1, 0}, {128, 0}, {0, 1}, {0xFF, 0xFF}};
    for (const auto& [low, high] : lengths) {
        const Packet bare = request(landap()).put(20, {low, high});
        EXPECT_TRUE(replies(refused, call(landap().handler, bare.bytes()))) << int{low} << "," << int{high};
        const Packet full = Packet(bare).put(22, std::string("YWRtaW4=")).put(86, std::string("c2VjcmV0"));
        EXPECT_TRUE(replies(granted, call(landap().handler, full.bytes()))) << int{low} << "," << int{high};
        const Packet wrong = Packet(full).put(86, std::string("U2VjcmV0"));
        EXPECT_TRUE(replies(refused, call(landap().handler, wrong.bytes()))) << int{low} << "," << int{high};
    }
    fake::clearEvents();
    const Packet unchecked = request(landap()).put(22, std::string("d3Jvbmc="));
    EXPECT_TRUE(replies(granted, call(landap().handler, unchecked.bytes())));
    EXPECT_THAT(fake::eventsOf({"cfgRead"}), testing::IsEmpty());
}

TEST_F(SupportedFunctions, AreToldWithoutAnyEffect) {
    for (const CommandRow* row : {&primary(), &landap()}) call(row->handler, request(*row).bytes());
    EXPECT_THAT(fake::writes(), testing::IsEmpty());
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

}  // namespace
}  // namespace unit
