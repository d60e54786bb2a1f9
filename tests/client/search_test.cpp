#include "client/search.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "client/error.h"
#include "client/text.h"
#include "fake_link.h"

using namespace client;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class FinderTest : public testing::Test {
protected:
    // Runs a search, the datagrams being those that arrived by now.
    std::vector<Found> search(Search search = {}) {
        if (search.interfaces.empty()) search.interfaces = {nearInterface()};
        Finder finder(link_, search, [this](const std::string& warning) { warnings_.push_back(warning); });
        finder.run([this](const Found& one) { told_.push_back(one); });
        return finder.all();
    }

    // Every request is answered after 10 ms with what `change` makes of a discovery reply.
    void answerWith(std::function<void(Bytes&)> change, Ipv4 sender = {{192, 0, 2, 10}}, unsigned interface = 3) {
        const auto before = link_.answer;
        link_.answer = [=, this](const FakeLink::Sent& sent) {
            before(sent);
            Bytes reply = discoveryReply();
            reply[2] = sent.bytes[2];
            reply[3] = sent.bytes[3];
            change(reply);
            link_.arrive(10ms, reply, sender, interface);
        };
    }

    static std::function<void(Bytes&)> camera(uint8_t mac, uint8_t address) {
        return [=](Bytes& reply) {
            reply[11] = mac;
            reply[293] = address;
        };
    }

    static Bytes reportOf(uint8_t mac, Ipv4 address) {
        Bytes report = presenceReport();
        report[11] = mac;
        put(report, 284, Bytes(address.bytes, address.bytes + 4));
        return report;
    }

    FakeLink link_;
    std::vector<std::string> warnings_;
    std::vector<Found> told_;
};

static void nothing(Bytes&) {}

TEST_F(FinderTest, AsksThreeTimesWithOneHeader) {
    EXPECT_THAT(search({.interfaces = {}, .wait = 3s}), IsEmpty());
    ASSERT_EQ(link_.sent.size(), 3u);
    for (size_t i = 0; i < 3; i++) {
        EXPECT_EQ(link_.sent[i].to, "all on eth0");
        EXPECT_EQ(link_.sent[i].at, i * 1s);
        EXPECT_EQ(link_.sent[i].bytes, link_.sent[0].bytes);
    }
    Bytes expected(22);
    put(expected, 0, {0xFD, 0xFD, link_.sent[0].bytes[2], link_.sent[0].bytes[3], 0xA1, 0x00});
    put(expected, 6, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0});
    EXPECT_EQ(link_.sent[0].bytes, expected);
    EXPECT_EQ(link_.elapsed(), 3s);
}

TEST_F(FinderTest, ACameraThatAnswersIsToldOnceAndAtOnce) {
    answerWith(nothing);
    bool isTold = false;
    Finder finder(link_, {.interfaces = {nearInterface()}}, [](const std::string&) {});
    finder.run([&](const Found& one) {
        EXPECT_FALSE(isTold);
        isTold = true;
        EXPECT_EQ(link_.elapsed(), 10ms);
        EXPECT_EQ(one.camera.name, "Front door");
        EXPECT_EQ(one.interface.name, "eth0");
        EXPECT_TRUE(one.answered && one.isNear);
        EXPECT_FALSE(one.sharesAddress || one.sharesMac || one.isElsewhere);
    });
    EXPECT_TRUE(isTold);
    EXPECT_EQ(finder.all().size(), 1u);
}

TEST_F(FinderTest, TheLandapFamilyHasItsOwnReply) {
    link_.answer = [this](const FakeLink::Sent& sent) {
        EXPECT_EQ(sent.bytes[18], 1);
        Bytes reply = landapDiscoveryReply();
        reply[2] = sent.bytes[2];
        reply[3] = sent.bytes[3];
        link_.arrive(1ms, reply);
    };
    EXPECT_EQ(search({.interfaces = {}, .family = Family::Landap}).size(), 1u);
}

TEST_F(FinderTest, WhatIsNoReplyIsIgnored) {
    answerWith([](Bytes& reply) { reply[2] ^= 1; });
    answerWith([](Bytes& reply) { reply[16] = 3; });
    answerWith([](Bytes& reply) { reply.pop_back(); });
    answerWith([](Bytes& reply) { reply[18] = 1; });
    link_.arrive(1ms, {});
    EXPECT_THAT(search(), IsEmpty());
}

TEST_F(FinderTest, ACameraThatOnlyReportsIsFoundAndToldAtTheEnd) {
    link_.arrive(100ms, reportOf(0xAF, {{192, 168, 0, 20}}));
    answerWith(camera(0x01, 11));
    const auto all = search();
    ASSERT_EQ(all.size(), 2u);
    ASSERT_EQ(told_.size(), 2u);
    EXPECT_TRUE(told_[0].answered);
    EXPECT_FALSE(told_[1].answered);
    EXPECT_FALSE(told_[1].isNear);
    EXPECT_EQ(addressText(told_[1].camera.address), "192.168.0.20");
    EXPECT_EQ(addressText(told_[1].camera.netmask), "255.255.255.0");
    EXPECT_EQ(told_[1].camera.name, "Front door");
    EXPECT_EQ(told_[1].camera.product, "Product");
    EXPECT_EQ(told_[1].camera.firmware, "1.05");
    EXPECT_EQ(told_[1].camera.hardware, "Rev B");
}

TEST_F(FinderTest, AReportNeverReplacesAReply) {
    answerWith(nothing);
    link_.arrive(1ms, reportOf(0xAF, {{192, 0, 2, 10}}));
    link_.arrive(500ms, reportOf(0xAF, {{192, 0, 2, 10}}));
    const auto all = search();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_TRUE(all[0].answered);
    EXPECT_EQ(all[0].camera.brand, "Brand");
    EXPECT_EQ(told_.size(), 1u);
}

TEST_F(FinderTest, AnAddressOfAnotherSubnetIsNotNear) {
    answerWith([](Bytes& reply) { reply[292] = 3; });
    const auto all = search();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_TRUE(all[0].answered);
    EXPECT_FALSE(all[0].isNear);
}

TEST_F(FinderTest, TwoCamerasOfOneAddressAreBothThereAndMarked) {
    answerWith(camera(0x01, 10));
    answerWith(camera(0x02, 10));
    answerWith(camera(0x03, 11));
    const auto all = search();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_TRUE(all[0].sharesAddress && all[1].sharesAddress);
    EXPECT_FALSE(all[0].sharesMac || all[1].sharesMac || all[2].sharesMac || all[2].sharesAddress);
    EXPECT_FALSE(told_[0].sharesAddress);  // nothing was known of the other yet
    EXPECT_TRUE(told_[1].sharesAddress);
}

TEST_F(FinderTest, OneMacAtTwoAddressesIsMarked) {
    answerWith(camera(0x01, 10));
    answerWith(camera(0x01, 11));
    const auto all = search();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_TRUE(all[0].sharesMac && all[1].sharesMac);
    EXPECT_FALSE(all[0].sharesAddress || all[1].sharesAddress);
}

TEST_F(FinderTest, ACameraHeardFromAnotherAddressThanItClaimsIsMarked) {
    answerWith(nothing, {{192, 0, 2, 66}});
    const auto all = search();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_TRUE(all[0].isElsewhere);
}

TEST_F(FinderTest, CamerasWithoutAnAddressShareNone) {
    const auto withoutAddress = [](uint8_t mac) {
        return [mac](Bytes& reply) { reply[11] = mac, put(reply, 290, {0, 0, 0, 0}); };
    };
    answerWith(withoutAddress(1));
    answerWith(withoutAddress(2));
    const auto all = search();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_FALSE(all[0].sharesAddress || all[1].sharesAddress || all[0].isNear);
}

TEST_F(FinderTest, EndsWhenAsManyAnsweredAsExpected) {
    answerWith(camera(0x01, 10));
    answerWith(camera(0x02, 11));
    EXPECT_EQ(search({.interfaces = {}, .wait = 3s, .expected = 2}).size(), 2u);
    EXPECT_EQ(link_.elapsed(), 10ms);
    EXPECT_EQ(link_.sent.size(), 1u);
}

TEST_F(FinderTest, ReportsDoNotCountAsAnswers) {
    link_.arrive(1ms, reportOf(0x05, {{192, 0, 2, 55}}));
    EXPECT_EQ(search({.interfaces = {}, .wait = 3s, .expected = 1}).size(), 1u);
    EXPECT_EQ(link_.elapsed(), 3s);
}

TEST_F(FinderTest, AReportFromAnotherSubnetIsAllThereWillBe) {
    link_.arrive(1ms, reportOf(0x05, {{192, 168, 0, 20}}));
    EXPECT_EQ(search({.interfaces = {}, .wait = 3s, .expected = 1}).size(), 1u);
    EXPECT_EQ(link_.elapsed(), 1ms);
}

TEST_F(FinderTest, EndsWithTheOneThatIsLookedFor) {
    link_.arrive(100ms, reportOf(0x05, {{192, 0, 2, 55}}));
    link_.arrive(200ms, reportOf(0x06, {{192, 0, 2, 56}}));
    link_.arrive(300ms, reportOf(0x07, {{192, 0, 2, 57}}));
    const auto isLast = [](const Found& one) { return one.camera.mac.bytes[5] == 6; };
    EXPECT_EQ(search({.interfaces = {}, .wait = 30s, .isLast = isLast}).size(), 2u);
    EXPECT_EQ(link_.elapsed(), 200ms);
}

TEST_F(FinderTest, WhatComesInOnAnotherInterfaceIsIgnored) {
    answerWith(nothing, {{192, 0, 2, 10}}, 4);
    link_.arrive(1ms, presenceReport(), {{192, 0, 2, 10}}, 4);
    EXPECT_THAT(search(), IsEmpty());
}

TEST_F(FinderTest, EachCameraIsKnownByTheInterfaceItCameInOn) {
    const Interface other{"eth1", 4, {{{{10, 0, 0, 1}}, {{255, 0, 0, 0}}}}};
    answerWith(camera(0x01, 10));
    answerWith([](Bytes& reply) { put(reply, 290, {10, 0, 0, 9}); }, {{10, 0, 0, 9}}, 4);
    const auto all = search({.interfaces = {nearInterface(), other}});
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].interface.name, "eth0");
    EXPECT_EQ(all[1].interface.name, "eth1");
    EXPECT_TRUE(all[0].isNear && all[1].isNear);
}

TEST_F(FinderTest, OneInterfaceThatCannotSendIsToldAndTheOtherSearched) {
    const Interface broken{"eth1", 4, {}};
    link_.broadcastError = [](const std::string& name) { return name == "eth1" ? ENETDOWN : 0; };
    answerWith(nothing);
    EXPECT_EQ(search({.interfaces = {broken, nearInterface()}}).size(), 1u);
    EXPECT_THAT(warnings_, ElementsAre("interface eth1: cannot send: Network is down"));
}

TEST_F(FinderTest, WhenNoneCanSendTheSearchFails) {
    link_.broadcastError = [](const std::string&) { return ENETDOWN; };
    try {
        search();
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::Local);
    }
    EXPECT_THAT(warnings_, IsEmpty());
}
