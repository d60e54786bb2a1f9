// The wireless settings in short: one key, its kind as it stands in the store.
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>

#include "support/wireless_rows.h"

using fake::Events;

namespace unit {
namespace {

class GetSimpleWifi : public BothFamilies {
protected:
    const CommandRow& get() const { return row("get_simple_wifi_info"); }
    Outcome callGet() const { return call(get().handler, request(get()).bytes()); }

    // What a get replies when nothing is stored.
    Packet emptyReply() const { return reply(get()).put(128, {0x0F, 0x1B}); }
};

INSTANTIATE_TEST_SUITE_P(Families, GetSimpleWifi, bothFamilies(), familyName);

Events readsBehindEncryption(const Events& events) {
    const Events front{"cfgRead WIRELESS Enable",  "cfgRead WIRELESS SSID",           "cfgRead WIRELESS Mode",
                       "cfgRead WIRELESS Channel", "cfgRead WIRELESS Authentication", "cfgRead WIRELESS Encryption"};
    EXPECT_TRUE(events.size() >= 6 && std::equal(front.begin(), front.end(), events.begin()));
    return events.size() < 6 ? events : Events(events.begin() + 6, events.end());
}

struct KeyRow {
    std::int32_t encryption, active;
    std::string told;
    Events reads;
};

TEST_P(GetSimpleWifi, TellsTheKeyInUse) {
    const Events active{"cfgRead WIRELESS WEPActiveKey"}, shared{"cfgRead WIRELESS PreSharedKey"};
    const auto wep = [&active](const char* name) { return Events{active[0], std::string("cfgRead WIRELESS ") + name}; };
    const KeyRow rows[] = {
        {0, 1, "", {}},
        {1, 0, "key zero", wep("WEPKey0")},
        {1, 1, "key one", wep("WEPKey1")},
        {1, 2, "key two", wep("WEPKey2")},
        {1, 3, "key three", wep("WEPKey3")},
        {1, 4, "", wep("WEPKey4")},
        {1, 7, "", wep("WEPKey7")},
        {1, -1, "", wep("WEPKey-1")},
        {1, INT32_MAX, "", wep("WEPKey2147483647")},
        {1, INT32_MIN, "", wep("WEPKey-2147483648")},
        {2, 1, "old secret", shared},
        {3, 1, "old secret", shared},
        {4, 1, "old secret", shared},
        {5, 1, "", {}},
        {255, 1, "", {}},
        {-1, 1, "", {}},
    };
    seedWireless();
    for (const KeyRow& wanted : rows) {
        SCOPED_TRACE(std::to_string(wanted.encryption) + " " + std::to_string(wanted.active));
        fake::clearEvents();
        fake::setNumber("WIRELESS", "Encryption", wanted.encryption);
        fake::setNumber("WIRELESS", "WEPActiveKey", wanted.active);
        const Outcome outcome = callGet();
        EXPECT_TRUE(replies(emptyReply()
                                .put(22, {1})
                                .put(23, std::string("old network"))
                                .put(59, {1, 11, 5, static_cast<std::uint8_t>(wanted.encryption & 0xFF)})
                                .put(63, wanted.told),
                            outcome));
        EXPECT_TRUE(traces(get(), 1, outcome));
        EXPECT_EQ(readsBehindEncryption(workEvents()), wanted.reads);
    }
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

TEST_P(GetSimpleWifi, TellsNothingButCapabilitiesOfAnEmptyStore) { EXPECT_TRUE(replies(emptyReply(), callGet())); }

TEST_P(GetSimpleWifi, TellsTheLowBytesOfNumbers) {
    for (int value = -1; value <= 0x10001; value += value < 300 ? 1 : 0x3F01) {
        SCOPED_TRACE(value);
        const auto lowByte = static_cast<std::uint8_t>(value & 0xFF);
        fake::setFlag("WIRELESS", "Enable", lowByte);
        for (const char* key : {"Mode", "Channel", "Encryption"}) fake::setNumber("WIRELESS", key, value);
        EXPECT_TRUE(replies(emptyReply().put(22, {lowByte}).put(59, {lowByte, lowByte, 0, lowByte}), callGet()));
    }
}

TEST_P(GetSimpleWifi, NumbersAuthenticationAsTheWireDoes) {
    const std::pair<std::int32_t, std::uint8_t> rows[] = {
        {0, 0}, {1, 1}, {2, 3}, {3, 4}, {4, 5}, {5, 0}, {256, 0}, {257, 0}, {-1, 0}, {INT32_MAX, 0}, {INT32_MIN, 0},
    };
    for (const auto& [stored, wire] : rows) {
        SCOPED_TRACE(stored);
        fake::setNumber("WIRELESS", "Authentication", stored);
        EXPECT_TRUE(replies(emptyReply().put(61, {wire}), callGet()));
    }
}

TEST_P(GetSimpleWifi, CutsTheSsidAt35BytesAndTheKeyAt64) {
    fake::setNumber("WIRELESS", "Encryption", 2);
    for (const std::size_t length : {0, 1, 34, 35, 36, 37, 63, 64, 65, 66, 67, 255}) {
        SCOPED_TRACE(length);
        fake::setText("WIRELESS", "SSID", std::string(length, 's'));
        fake::setText("WIRELESS", "PreSharedKey", std::string(length, 'k'));
        EXPECT_TRUE(replies(emptyReply()
                                .fill(23, std::min<std::size_t>(length, 35), 's')
                                .put(62, {2})
                                .fill(63, std::min<std::size_t>(length, 64), 'k'),
                            callGet()));
    }
}

class SetSimpleWifi : public BothFamilies {
protected:
    void SetUp() override {
        BothFamilies::SetUp();
        seedWireless();
    }

    const CommandRow& set() const { return row("set_simple_wifi_info"); }

    // A change without encryption that nothing is wrong with.
    Packet good() const { return request(set()).put(150, {1}).put(151, std::string("garden")).put(188, {6}); }

    Packet wep(const std::string& key) const { return good().put(190, {1}).put(191, key + '\0'); }
    Packet psk(const std::string& key) const { return good().put(190, {2}).put(191, key + '\0'); }

    testing::AssertionResult gives(int code, const Packet& packet) const { return changes(set(), code, packet); }
};

INSTANTIATE_TEST_SUITE_P(Families, SetSimpleWifi, bothFamilies(), familyName);

TEST_P(SetSimpleWifi, ChecksTheCredentialsBeforeAnyField) {
    const Packet packet = good().put(150, {2}).put(22, std::string("cm9vdA=="));
    EXPECT_TRUE(replies(reply(set()).put(16, {3}), call(set().handler, packet.bytes())));
    EXPECT_THAT(workEvents(), testing::IsEmpty());
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

TEST_P(SetSimpleWifi, ChecksEveryValueOfEveryByte) {
    fake::setNumber("WIRELESS", "WEPKeyFormat", 0);
    fake::setNumber("WIRELESS", "WEPKeyLength", 1);
    const std::map<int, int> stored{{0, 0}, {1, 1}, {3, 2}, {4, 3}, {5, 4}};  // authentication, by wire code
    const Packet both = good().put(191, std::string("thirteen long"));
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        const auto byte = static_cast<std::uint8_t>(value);
        EXPECT_TRUE(gives(value == 1 ? 0 : 201, Packet(both).put(150, {byte})));
        EXPECT_TRUE(gives(value < 2 ? 0 : 204, Packet(both).put(187, {byte})));
        if (value < 2) {
            EXPECT_EQ(fake::number("WIRELESS", "Mode"), value);
        }
        EXPECT_TRUE(gives(0, Packet(both).put(188, {byte})));
        EXPECT_EQ(fake::number("WIRELESS", "Channel"), value);
        const auto known = stored.find(value);
        EXPECT_TRUE(gives(known != stored.end() ? 0 : 206, Packet(both).put(189, {byte})));
        if (known != stored.end()) {
            EXPECT_EQ(fake::number("WIRELESS", "Authentication"), known->second);
        }
        EXPECT_TRUE(gives(value < 5 ? 0 : 205, Packet(both).put(190, {byte})));
        if (value < 5) {
            EXPECT_EQ(fake::number("WIRELESS", "Encryption"), value);
        }
    }
}

// One thing that can be wrong, put into a request that may be wrong already.
struct Fault {
    int code;
    std::size_t offset;
    Bytes bytes;
};

const Fault kFaults[] = {
    {201, 150, {0}},
    {204, 187, {2}},
    {205, 190, {5}},
    {206, 189, {2}},
    {211, 190, {1, 'a', 'b', 0}},
    {210, 190, {4, 'a', 'b', 0}},
};

TEST_P(SetSimpleWifi, GivesTheFirstOfTwoFaults) {
    for (const Fault* first = std::begin(kFaults); first != std::end(kFaults); ++first) {
        EXPECT_TRUE(gives(first->code, psk("12345678").put(first->offset, first->bytes))) << first->code << " alone";
        for (const Fault* second = first + 1; second != std::end(kFaults); ++second) {
            Packet both = psk("12345678");
            both.put(second->offset, second->bytes).put(first->offset, first->bytes);
            EXPECT_TRUE(gives(first->code, both)) << first->code << " and " << second->code;
        }
    }
}

TEST_P(SetSimpleWifi, ChecksTheWepKeyByTheStoredFormatAndLength) {
    for (const WepKeyRow& key : wepKeyRows()) {
        SCOPED_TRACE(fake::quoted(key.key));
        seedWireless();
        fake::setNumber("WIRELESS", "WEPKeyFormat", key.format);
        fake::setNumber("WIRELESS", "WEPKeyLength", key.length);
        EXPECT_TRUE(gives(key.good ? 0 : 211, wep(key.key)));
        EXPECT_EQ(fake::text("WIRELESS", "WEPKey3"), key.good ? key.key : "key three");
        EXPECT_EQ(fake::text("WIRELESS", "WEPKey0"), "key zero");
        EXPECT_EQ(fake::text("WIRELESS", "PreSharedKey"), "old secret");
        EXPECT_EQ(fake::number("WIRELESS", "WEPKeyFormat"), key.format);
        EXPECT_EQ(fake::number("WIRELESS", "WEPKeyLength"), key.length);
        EXPECT_EQ(fake::number("WIRELESS", "WEPActiveKey"), 3);
    }
}

TEST_P(SetSimpleWifi, LetsAnyWepKeyThroughForAnUnknownFormatOrLength) {
    const std::pair<std::int32_t, std::int32_t> unknown[] = {
        {2, 0}, {0, 2}, {-1, 0}, {0, -1}, {2, 2}, {256, 0}, {1, 256}, {INT32_MIN, 1}, {1, INT32_MAX},
    };
    for (const auto& [format, length] : unknown) {
        fake::setNumber("WIRELESS", "WEPKeyFormat", format);
        fake::setNumber("WIRELESS", "WEPKeyLength", length);
        for (const std::string& key : {std::string(), std::string("x\x01\xFF"), std::string(300, 'k')}) {
            EXPECT_TRUE(gives(0, wep(key))) << format << " " << length;
            EXPECT_EQ(fake::text("WIRELESS", "WEPKey3"), key.substr(0, 255));
        }
    }
}

TEST_P(SetSimpleWifi, ChecksThePreSharedKeyAndWritesIt) {
    for (const PreSharedKeyRow& key : preSharedKeyRows()) {
        for (const std::uint8_t encryption : Bytes{2, 3, 4}) {
            SCOPED_TRACE(fake::quoted(key.key) + " with " + std::to_string(encryption));
            seedWireless();
            EXPECT_TRUE(gives(key.good ? 0 : 210, psk(key.key).put(190, {encryption})));
            EXPECT_EQ(fake::text("WIRELESS", "PreSharedKey"), key.good ? key.key : "old secret");
            EXPECT_EQ(fake::text("WIRELESS", "WEPKey3"), "key three");
        }
    }
}

TEST_P(SetSimpleWifi, NamesTheWepKeyByTheStoredIndex) {
    fake::setNumber("WIRELESS", "WEPKeyLength", 0);  // ten hexadecimal digits
    for (const std::int32_t active : {0, 1, 2, 3, 4, 7, -1, INT32_MAX, INT32_MIN}) {
        fake::setNumber("WIRELESS", "WEPActiveKey", active);
        EXPECT_TRUE(gives(0, wep("0123456789")));
        const std::string written = fake::writes().back();
        EXPECT_EQ(written.substr(0, written.find(' ', 18)), "cfgWrite WIRELESS WEPKey" + std::to_string(active));
    }
}

const Events kReads{"cfgRead WIRELESS WEPKeyFormat", "cfgRead WIRELESS WEPKeyLength", "cfgRead WIRELESS WEPActiveKey"};

// What a good request writes with this encryption, and the key's own write if it has one.
Events changeEvents(int encryption, const Events& key) {
    Events wanted = kReads;
    wanted.insert(wanted.end(), {"cfgWrite WIRELESS Channel number 6 1", "cfgWrite WIRELESS SSID \"garden\" 1",
                                 "cfgWrite WIRELESS Mode number 0 1", "cfgWrite WIRELESS Authentication number 0 1",
                                 "cfgWrite WIRELESS Encryption number " + std::to_string(encryption) + " 1"});
    wanted.insert(wanted.end(), key.begin(), key.end());
    return wanted;
}

TEST_P(SetSimpleWifi, WritesInOrderAndMirrorsWhenTheRepeaterFollows) {
    fake::setNumber("WIRELESS", "WEPKeyLength", 0);
    const struct {
        Packet packet;
        Events change;
    } rows[] = {
        {good().put(191, std::string("\x01")), changeEvents(0, {})},
        {wep("0123456789"), changeEvents(1, {"cfgWrite WIRELESS WEPKey3 \"0123456789\" 1"})},
        {psk("12345678"), changeEvents(2, {"cfgWrite WIRELESS PreSharedKey \"12345678\" 1"})},
    };
    for (const int follows : {-1, 0, 1, 2, 0x80, 0xFF}) {
        for (const auto& wanted : rows) {
            SCOPED_TRACE(follows);
            if (follows >= 0) fake::setFlag("WIRELESS_REP", "SameWithClient", static_cast<std::uint8_t>(follows));
            EXPECT_TRUE(gives(0, wanted.packet));
            Events events = wanted.change;
            const Events mirror = follows > 0 ? mirrorEvents() : Events{"cfgRead WIRELESS_REP SameWithClient"};
            events.insert(events.end(), mirror.begin(), mirror.end());
            EXPECT_EQ(workEvents(), events);
        }
    }
    EXPECT_EQ(fake::text("WIRELESS_REP", "SSID"), "garden");
    EXPECT_EQ(fake::number("WIRELESS_REP", "WEPActiveKey"), 3);
    EXPECT_EQ(fake::number("WIRELESS_REP", "Mode"), 0);
}

// The network's name ends at its NUL or at 255 bytes, wherever the fields behind it begin.
TEST_P(SetSimpleWifi, TakesTheSsidPastItsField) {
    for (const std::size_t length : {0, 1, 34, 35, 36, 37, 38, 39, 40, 41, 100, 254, 255, 256, 600, 873}) {
        SCOPED_TRACE(length);
        Packet packet = good().fill(151, 873, 0).fill(151, length, 's');
        std::string name(length, 's');
        for (std::size_t offset = 187; offset <= 190; ++offset) {  // mode, channel, code, WEP
            if (length <= offset - 151) continue;
            packet.put(offset, {1});
            name[offset - 151] = '\x01';
        }
        fake::setNumber("WIRELESS", "WEPKeyFormat", 9);
        EXPECT_TRUE(gives(0, packet));
        EXPECT_EQ(fake::text("WIRELESS", "SSID"), name.substr(0, 255));
    }
}

TEST_P(SetSimpleWifi, GoesOnAfterAFailedWrite) {
    fake::setFlag("WIRELESS_REP", "SameWithClient", 1);
    for (int nth = 1; nth <= 18; ++nth) {
        fake::failCall("cfgWrite", nth, EIO);
        EXPECT_TRUE(gives(0, psk("12345678")));
        EXPECT_EQ(fake::writes().size(), 18U);
    }
}

// Sixty-four times "A" is Base64 of no text at all, which is what the store then holds.
TEST_P(SetSimpleWifi, SurvivesRequestsWithoutANul) {
    fake::erase("USER_ADMIN", "Username1");
    fake::erase("USER_ADMIN", "Password1");
    const CommandRow& get = row("get_simple_wifi_info");
    EXPECT_EQ(call(get.handler, request(get).fill(22, 1002, 'A').bytes()).length, 130);
    const Packet packet = request(set()).fill(22, 1002, 'A').put(150, {1}).put(187, {1, 'Z', 1, 1});
    EXPECT_TRUE(gives(201, Packet(packet).put(150, {'A'})));
    EXPECT_TRUE(gives(211, packet));
    EXPECT_TRUE(gives(210, Packet(packet).put(190, {2})));
    fake::setNumber("WIRELESS", "WEPKeyFormat", 2);
    EXPECT_TRUE(gives(0, packet));
    EXPECT_EQ(fake::text("WIRELESS", "SSID"), std::string(36, 'A') + "\x01Z\x01\x01" + std::string(215, 'A'));
    EXPECT_EQ(fake::text("WIRELESS", "WEPKey3"), std::string(255, 'A'));
}

}  // namespace
}  // namespace unit
