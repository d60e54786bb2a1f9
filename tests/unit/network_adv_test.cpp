// Advanced network settings: PPPoE, UPnP and dynamic DNS.
#include <algorithm>
#include <cerrno>

#include "support/handler_test.h"

using fake::Events;

namespace unit {
namespace {

class NetworkAdv : public BothFamilies {
protected:
    const CommandRow& get() const { return row("get_network_adv_info"); }
    const CommandRow& set() const { return row("set_network_adv_info"); }

    Packet setRequest(std::uint8_t mask, std::uint8_t values) const { return request(set()).put(279, {values, mask}); }

    // What a get replies when nothing is stored.
    Packet emptyReply() const {
        return reply(get()).put(153, {1}).put(346, {1}).put(347, std::string("names.example.com;"));
    }

    Outcome callGet() const { return call(get().handler, request(get()).bytes()); }
    Outcome callSet(const Packet& packet) const { return call(set().handler, packet.bytes()); }
};

INSTANTIATE_TEST_SUITE_P(Families, NetworkAdv, bothFamilies(), familyName);

Events storeEvents() { return fake::eventsOf({"cfgRead", "cfgWrite"}); }

TEST_P(NetworkAdv, GetTellsWhatIsStored) {
    fake::setText("NETWORK_V4", "PPPoEUID", "dial@isp");
    fake::setFlag("NETWORK_V4", "PPPoEEnable", 1);
    fake::setFlag("UPnP", "Enable", 1);
    fake::setFlag("DDNS", "Enable", 0);
    fake::setText("DDNS", "UID", "me");
    fake::setText("DDNS", "PWD", "word");
    fake::setText("DDNS", "HOST", "cam.example.org");
    const Outcome outcome = callGet();
    EXPECT_TRUE(replies(emptyReply()
                            .put(23, std::string("dial@isp"))
                            .put(87, std::string("dial@isp"))
                            .put(151, {3, 3, 1})
                            .put(154, std::string("me"))
                            .put(218, std::string("word"))
                            .put(282, std::string("cam.example.org")),
                        outcome));
    EXPECT_TRUE(traces(get(), 1, outcome));
    EXPECT_EQ(storeEvents(),
              (Events{"cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1", "cfgRead NETWORK_V4 PPPoEUID",
                      "cfgRead NETWORK_V4 PPPoEUID", "cfgRead UPnP Enable", "cfgRead DDNS Enable",
                      "cfgRead NETWORK_V4 PPPoEEnable", "cfgRead DDNS UID", "cfgRead DDNS PWD", "cfgRead DDNS HOST"}));
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

TEST_P(NetworkAdv, GetTellsNothingButConstantsOfAnEmptyStore) { EXPECT_TRUE(replies(emptyReply(), callGet())); }

TEST_P(NetworkAdv, GetCutsTextsAt63Bytes) {
    for (const std::size_t length : {0, 1, 62, 63, 64, 65, 255}) {
        SCOPED_TRACE(length);
        const std::size_t told = std::min<std::size_t>(length, 63);
        fake::setText("NETWORK_V4", "PPPoEUID", std::string(length, 'p'));
        fake::setText("DDNS", "UID", std::string(length, 'u'));
        fake::setText("DDNS", "PWD", std::string(length, 'w'));
        fake::setText("DDNS", "HOST", std::string(length, 'h'));
        EXPECT_TRUE(replies(emptyReply()
                                .fill(23, told, 'p')
                                .fill(87, told, 'p')
                                .fill(154, told, 'u')
                                .fill(218, told, 'w')
                                .fill(282, told, 'h'),
                            callGet()));
    }
}

TEST_P(NetworkAdv, GetJoinsTheStoredFlagsUnmasked) {
    fake::setFlag("DDNS", "Enable", 0x55);  // gives way to the PPPoE flag
    for (int byte = 0; byte < 256; ++byte) {
        for (const int other : {0, 1, 0x80}) {
            SCOPED_TRACE(std::to_string(byte) + " and " + std::to_string(other));
            fake::setFlag("UPnP", "Enable", static_cast<std::uint8_t>(byte));
            fake::setFlag("NETWORK_V4", "PPPoEEnable", static_cast<std::uint8_t>(other));
            const auto told = static_cast<std::uint8_t>(byte | ((other * 2) & 0xFF));
            EXPECT_TRUE(replies(emptyReply().put(151, {told, told}), callGet()));
            fake::setFlag("UPnP", "Enable", static_cast<std::uint8_t>(other));
            fake::setFlag("NETWORK_V4", "PPPoEEnable", static_cast<std::uint8_t>(byte));
            const auto swapped = static_cast<std::uint8_t>(other | ((byte * 2) & 0xFF));
            EXPECT_TRUE(replies(emptyReply().put(151, {swapped, swapped}), callGet()));
        }
        fake::clearEvents();
    }
}

TEST_P(NetworkAdv, GetTellsTheDdnsFlagWhenThePppoeKeyIsMissing) {
    fake::setFlag("DDNS", "Enable", 1);
    EXPECT_TRUE(replies(emptyReply().put(151, {2, 2}), callGet()));
}

struct Refusal {
    std::uint8_t leading, flag;
    std::uint8_t status, code0, code1;
};

TEST_P(NetworkAdv, SetChecksTheLeadingByteThenTheFlag) {
    const Refusal rows[] = {
        {0, 0, 0, 0, 0},       {1, 0, 0, 0, 0},          {2, 0, 2, 0, 0},          {3, 0, 2, 0, 0},
        {0x80, 0, 2, 0, 0},    {0xFF, 0, 2, 0, 0},       {0, 1, 2, 0x30, 0x01},    {0, 2, 2, 0x30, 0x01},
        {1, 1, 2, 0x30, 0x01}, {0, 0x80, 2, 0x30, 0x01}, {1, 0xFF, 2, 0x30, 0x01}, {2, 1, 2, 0, 0},
    };
    for (const Refusal& wanted : rows) {
        SCOPED_TRACE(std::to_string(wanted.leading) + " " + std::to_string(wanted.flag));
        fake::clearEvents();
        const Packet packet = setRequest(3, 1).put(150, {wanted.leading}).put(281, {wanted.flag});
        const Outcome outcome = callSet(packet);
        EXPECT_TRUE(replies(reply(set()).put(16, {wanted.status}).put(22, {wanted.code0, wanted.code1}), outcome));
        EXPECT_TRUE(traces(set(), 1, outcome));
        EXPECT_EQ(fake::writes().size(), wanted.status == 0 ? 6U : 0U);
        EXPECT_THAT(raisedFlags(), testing::IsEmpty());
    }
}

TEST_P(NetworkAdv, SetChecksTheCredentialsBeforeAnyField) {
    const Packet packet = setRequest(3, 1).put(150, {2}).put(281, {1}).put(86, std::string("U2VjcmV0"));
    EXPECT_TRUE(replies(reply(set()).put(16, {3}), callSet(packet)));
    EXPECT_THAT(fake::writes(), testing::IsEmpty());
}

// The writes that a mask and values ask for when the texts are empty.
Events writesOf(int mask, int values) {
    Events wanted;
    int told = 0;
    if (mask & 1) {
        told = values & 1;
        wanted.push_back("cfgWrite UPnP Enable flag " + std::to_string(told) + " 1");
    }
    if (mask & 2) {
        wanted.push_back("cfgWrite DDNS Enable flag " + std::to_string(told) + " 1");
        wanted.push_back("cfgWrite DDNS PROVIDER number 4 1");
        for (const char* key : {"UID", "PWD", "HOST"}) {
            wanted.push_back(std::string("cfgWrite DDNS ") + key + " \"\" 1");
        }
    }
    return wanted;
}

TEST_P(NetworkAdv, SetWritesWhatTheMaskNames) {
    for (int byte = 0; byte < 256; ++byte) {
        for (const int other : {0, 1, 2, 3, 0xFF}) {
            for (const auto& [mask, values] : {std::pair(byte, other), std::pair(other, byte)}) {
                SCOPED_TRACE("mask " + std::to_string(mask) + " values " + std::to_string(values));
                fake::clearEvents();
                const Packet packet = setRequest(static_cast<std::uint8_t>(mask), static_cast<std::uint8_t>(values));
                EXPECT_TRUE(replies(reply(set()), callSet(packet)));
                EXPECT_EQ(fake::writes(), writesOf(mask, values));
            }
        }
    }
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

TEST_P(NetworkAdv, SetWritesInOrderAndReadsNothing) {
    const Packet packet = setRequest(3, 1)
                              .put(151, std::string("dial"))
                              .put(215, std::string("hush"))
                              .put(282, std::string("me"))
                              .put(346, std::string("word"))
                              .put(410, std::string("cam.example.org"));
    const Outcome outcome = callSet(packet);
    EXPECT_TRUE(replies(reply(set()), outcome));
    EXPECT_TRUE(traces(set(), 1, outcome));
    EXPECT_EQ(storeEvents(), (Events{"cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1",
                                     "cfgWrite UPnP Enable flag 1 1", "cfgWrite DDNS Enable flag 1 1",
                                     "cfgWrite DDNS PROVIDER number 4 1", "cfgWrite DDNS UID \"me\" 1",
                                     "cfgWrite DDNS PWD \"word\" 1", "cfgWrite DDNS HOST \"cam.example.org\" 1"}));
}

// The text begins in the user name's field and is as long as told; the fields behind hold its rest.
TEST_P(NetworkAdv, SetTakesTextsPastTheirFields) {
    for (const std::size_t length : {0, 1, 63, 64, 65, 127, 128, 129, 254, 255, 256, 383, 384, 741, 742}) {
        SCOPED_TRACE(length);
        EXPECT_TRUE(replies(reply(set()), callSet(setRequest(2, 0).fill(282, length, 'x'))));
        const auto from = [length](std::size_t offset) {
            const std::size_t skipped = offset - 282;
            return std::string(std::min<std::size_t>(length > skipped ? length - skipped : 0, 255), 'x');
        };
        EXPECT_EQ(fake::text("DDNS", "UID"), from(282));
        EXPECT_EQ(fake::text("DDNS", "PWD"), from(346));
        EXPECT_EQ(fake::text("DDNS", "HOST"), from(410));
    }
}

TEST_P(NetworkAdv, SetGoesOnAfterAFailedWrite) {
    for (int nth = 1; nth <= 6; ++nth) {
        fake::clearEvents();
        fake::failCall("cfgWrite", nth, EIO);
        EXPECT_TRUE(replies(reply(set()), callSet(setRequest(3, 1))));
        EXPECT_EQ(fake::writes(), writesOf(3, 1));
    }
}

TEST_P(NetworkAdv, SetRefusesWhatAGetTells) {
    const Outcome told = callGet();
    Packet packet = request(set());
    packet.put(150, Bytes(told.reply.begin() + 22, told.reply.begin() + 547));
    EXPECT_TRUE(replies(reply(set()).put(16, {2}).put(22, {0x30, 0x01}), callSet(packet)));
    EXPECT_THAT(fake::writes(), testing::IsEmpty());
}

// Sixty-four times "A" is Base64 of no text at all, which is what the store then holds.
TEST_P(NetworkAdv, SurvivesRequestsWithoutANul) {
    fake::erase("USER_ADMIN", "Username1");
    fake::erase("USER_ADMIN", "Password1");
    EXPECT_TRUE(replies(emptyReply(), call(get().handler, request(get()).fill(22, 1002, 'A').bytes())));
    const Packet refused = request(set()).fill(22, 1002, 'A').put(150, {1});
    EXPECT_TRUE(replies(reply(set()).put(16, {2}).put(22, {0x30, 0x01}), callSet(refused)));
    EXPECT_THAT(fake::writes(), testing::IsEmpty());
    EXPECT_TRUE(replies(reply(set()), callSet(Packet(refused).put(281, {0}))));  // 0x41 in the mask: UPnP only
    EXPECT_EQ(fake::writes(), (Events{"cfgWrite UPnP Enable flag 1 1"}));
    EXPECT_TRUE(replies(reply(set()), callSet(Packet(refused).put(280, {2, 0}))));
    EXPECT_EQ(fake::text("DDNS", "HOST"), std::string(255, 'A'));
}

}  // namespace
}  // namespace unit
