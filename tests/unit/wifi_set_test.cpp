// The wireless settings in full: changing them.
#include <cerrno>
#include <iterator>
#include <map>

#include "support/wireless_rows.h"

using fake::Events;

namespace unit {
namespace {

class SetWifi : public BothFamilies {
protected:
    void SetUp() override {
        BothFamilies::SetUp();
        seedWireless();
        fake::camera().region = 1;
        fake::camera().iniFiles["/etc/wifi_channel.ini"] = {{"1", {"1", "6", "11", "36"}}};
    }

    const CommandRow& set() const { return row("set_wifi_info"); }

    // A change without encryption that nothing is wrong with.
    Packet good() const { return request(set()).put(150, {1, 6}).put(152, std::string("garden")); }

    // The same for WEP, 64 bit, printable, with key 0.
    Packet wep() const { return good().put(188, {0x10}).put(192, std::string("abcde")); }

    // The same with a pre-shared key.
    Packet psk() const { return good().put(188, {0x20}).put(320, std::string("12345678")); }

    testing::AssertionResult gives(int code, const Packet& packet) const { return changes(set(), code, packet); }
};

INSTANTIATE_TEST_SUITE_P(Families, SetWifi, bothFamilies(), familyName);

TEST_P(SetWifi, ChecksTheCredentialsBeforeAnyField) {
    const Packet packet = good().put(150, {2}).put(86, std::string("c2VjcmV1"));
    EXPECT_TRUE(replies(reply(set()).put(16, {3}), call(set().handler, packet.bytes())));
    EXPECT_THAT(workEvents(), testing::IsEmpty());
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

TEST_P(SetWifi, AcceptsEnableOneOnly) {
    for (int byte = 0; byte < 256; ++byte) {
        EXPECT_TRUE(gives(byte == 1 ? 0 : 201, good().put(150, {static_cast<std::uint8_t>(byte)}))) << byte;
    }
}

TEST_P(SetWifi, AcceptsTheRegionsChannelsOnly) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool listed = byte == 1 || byte == 6 || byte == 11 || byte == 36;
        EXPECT_TRUE(gives(listed ? 0 : 202, good().put(151, {static_cast<std::uint8_t>(byte)}))) << byte;
    }
}

TEST_P(SetWifi, ChecksEveryModeAndEncryption) {
    for (int byte = 0; byte < 256; ++byte) {
        const int mode = byte % 16, encryption = byte / 16;
        const int code = mode >= 2 ? 204 : encryption >= 5 ? 205 : 0;
        EXPECT_TRUE(gives(code, wep().put(320, std::string("12345678")).put(188, {static_cast<std::uint8_t>(byte)})))
            << byte;
        if (code != 0) continue;
        EXPECT_EQ(fake::number("WIRELESS", "Mode"), mode);
        EXPECT_EQ(fake::number("WIRELESS", "Encryption"), encryption);
    }
}

TEST_P(SetWifi, ChecksEveryAuthenticationAndKeyLength) {
    const std::map<int, int> stored{{0, 0}, {1, 1}, {3, 2}, {4, 3}, {5, 4}};  // by wire code
    for (int byte = 0; byte < 256; ++byte) {
        const auto known = stored.find(byte % 16);
        const int code = known == stored.end() ? 206 : byte / 16 >= 2 ? 207 : 0;
        EXPECT_TRUE(gives(code, good().put(189, {static_cast<std::uint8_t>(byte)}))) << byte;
        if (code != 0) continue;
        EXPECT_EQ(fake::number("WIRELESS", "Authentication"), known->second);
        EXPECT_EQ(fake::number("WIRELESS", "WEPKeyLength"), byte / 16);
    }
}

TEST_P(SetWifi, ChecksEveryKeyFormatAndActiveKey) {
    for (int byte = 0; byte < 256; ++byte) {
        const int code = byte % 16 >= 2 ? 208 : byte / 16 >= 4 ? 212 : 0;
        EXPECT_TRUE(gives(code, good().put(190, {static_cast<std::uint8_t>(byte)}))) << byte;
        if (code != 0) continue;
        EXPECT_EQ(fake::number("WIRELESS", "WEPKeyFormat"), byte % 16);
        EXPECT_EQ(fake::number("WIRELESS", "WEPActiveKey"), byte / 16);
    }
}

// One thing that can be wrong, put into a request that may be wrong already. Later faults give way where two share a
// byte's half.
struct FieldFault {
    int code;
    void (*put)(Packet& packet);
};

void putLow(Packet& packet, std::size_t offset, int value) {
    packet.put(offset, {static_cast<std::uint8_t>((packet.bytes()[offset] & 0xF0) | value)});
}

void putHigh(Packet& packet, std::size_t offset, int value) {
    packet.put(offset, {static_cast<std::uint8_t>((packet.bytes()[offset] & 0x0F) | value << 4)});
}

const FieldFault kFieldFaults[] = {
    {201, [](Packet& packet) { packet.put(150, {0}); }},
    {202, [](Packet& packet) { packet.put(151, {2}); }},
    {204, [](Packet& packet) { putLow(packet, 188, 2); }},
    {205, [](Packet& packet) { putHigh(packet, 188, 5); }},
    {206, [](Packet& packet) { putLow(packet, 189, 2); }},
    {207, [](Packet& packet) { putHigh(packet, 189, 2); }},
    {208, [](Packet& packet) { putLow(packet, 190, 2); }},
    {212, [](Packet& packet) { putHigh(packet, 190, 4); }},
    {211,
     [](Packet& packet) {
         putHigh(packet, 188, 1);
         packet.put(192, std::string("abcdef"));
     }},
    {210,
     [](Packet& packet) {
         putHigh(packet, 188, 2);
         packet.put(320, std::string(7, 'x') + '\0');
     }},
};

TEST_P(SetWifi, GivesTheFirstOfTwoFaults) {
    for (const FieldFault* first = std::begin(kFieldFaults); first != std::end(kFieldFaults); ++first) {
        Packet one = psk();
        first->put(one);
        EXPECT_TRUE(gives(first->code, one)) << first->code << " alone";
        for (const FieldFault* second = first + 1; second != std::end(kFieldFaults); ++second) {
            Packet both = psk();
            second->put(both);
            first->put(both);
            EXPECT_TRUE(gives(first->code, both)) << first->code << " and " << second->code;
        }
    }
}

TEST_P(SetWifi, GivesTheFirstOfAllFaults) {
    for (const FieldFault* first = std::begin(kFieldFaults); first != std::end(kFieldFaults); ++first) {
        Packet packet = psk();
        for (const FieldFault* fault = std::end(kFieldFaults); fault != first; --fault) fault[-1].put(packet);
        EXPECT_TRUE(gives(first->code, packet)) << first->code;
    }
}

TEST_P(SetWifi, ChecksTheActiveWepKeyAndWritesItAlone) {
    for (const WepKeyRow& key : wepKeyRows()) {
        for (std::uint8_t active = 0; active < 4; ++active) {
            SCOPED_TRACE(fake::quoted(key.key) + " as key " + std::to_string(active));
            seedWireless();
            Packet packet = good().put(188, {0x10, static_cast<std::uint8_t>(key.length << 4)});
            packet.put(190, {static_cast<std::uint8_t>(active << 4 | key.format)});
            for (std::size_t other = 192; other < 320; other += 32) packet.put(other, std::string("no\x01\xFF"));
            packet.put(192 + active * std::size_t{32}, key.key + '\0');
            EXPECT_TRUE(gives(key.good ? 0 : 211, packet));
            const char* const old[] = {"key zero", "key one", "key two", "key three"};
            for (std::uint8_t index = 0; index < 4; ++index) {
                const bool written = key.good && index == active;
                EXPECT_EQ(fake::text("WIRELESS", "WEPKey" + std::to_string(index)), written ? key.key : old[index]);
            }
            EXPECT_EQ(fake::text("WIRELESS", "PreSharedKey"), "old secret");
        }
    }
}

TEST_P(SetWifi, ChecksThePreSharedKeyAndWritesIt) {
    for (const PreSharedKeyRow& key : preSharedKeyRows()) {
        for (const std::uint8_t byte : Bytes{0x20, 0x30, 0x40}) {
            SCOPED_TRACE(fake::quoted(key.key) + " with " + std::to_string(byte));
            seedWireless();
            const Packet packet = good().put(188, {byte}).put(192, std::string("\x01\xFF")).put(320, key.key + '\0');
            EXPECT_TRUE(gives(key.good ? 0 : 210, packet));
            EXPECT_EQ(fake::text("WIRELESS", "PreSharedKey"), key.good ? key.key : "old secret");
            EXPECT_EQ(fake::text("WIRELESS", "WEPKey0"), "key zero");
        }
    }
}

TEST_P(SetWifi, IgnoresBothKeysWithoutEncryption) {
    EXPECT_TRUE(gives(0, good().put(192, std::string("\x01")).put(320, std::string("\x01"))));
    EXPECT_EQ(workEvents(),
              (Events{"cfgWrite WIRELESS Channel number 6 1", "cfgWrite WIRELESS SSID \"garden\" 1",
                      "cfgWrite WIRELESS Mode number 0 1", "cfgWrite WIRELESS Authentication number 0 1",
                      "cfgWrite WIRELESS Encryption number 0 1", "cfgWrite WIRELESS WEPKeyFormat number 0 1",
                      "cfgWrite WIRELESS WEPKeyLength number 0 1", "cfgWrite WIRELESS WEPActiveKey number 0 1",
                      "cfgRead WIRELESS_REP SameWithClient"}));
}

TEST_P(SetWifi, WritesInOrder) {
    const Packet packet =
        good().put(151, {36}).put(188, {0x11, 0x15, 0x21}).put(256, std::string("00112233445566778899aAbBcC"));
    EXPECT_TRUE(gives(0, packet));
    EXPECT_EQ(
        workEvents(),
        (Events{"cfgWrite WIRELESS Channel number 36 1", "cfgWrite WIRELESS SSID \"garden\" 1",
                "cfgWrite WIRELESS Mode number 1 1", "cfgWrite WIRELESS Authentication number 4 1",
                "cfgWrite WIRELESS Encryption number 1 1", "cfgWrite WIRELESS WEPKeyFormat number 1 1",
                "cfgWrite WIRELESS WEPKeyLength number 1 1", "cfgWrite WIRELESS WEPActiveKey number 2 1",
                "cfgWrite WIRELESS WEPKey2 \"00112233445566778899aAbBcC\" 1", "cfgRead WIRELESS_REP SameWithClient"}));
    EXPECT_TRUE(gives(0, psk()));
    EXPECT_EQ(fake::writes().back(), "cfgWrite WIRELESS PreSharedKey \"12345678\" 1");
    EXPECT_EQ(fake::writes().size(), 9U);
    EXPECT_EQ(fake::flag("WIRELESS", "Enable"), 1);
}

TEST_P(SetWifi, MirrorsWhenTheRepeaterFollows) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        fake::setFlag("WIRELESS_REP", "SameWithClient", static_cast<std::uint8_t>(byte));
        EXPECT_TRUE(gives(0, psk()));
        const Events events = workEvents();
        ASSERT_GE(events.size(), 9U);
        const Events behind(events.begin() + 9, events.end());
        EXPECT_EQ(behind, byte == 0 ? Events{"cfgRead WIRELESS_REP SameWithClient"} : mirrorEvents());
    }
    EXPECT_EQ(fake::text("WIRELESS_REP", "SSID"), "garden");
    EXPECT_EQ(fake::number("WIRELESS_REP", "Channel"), 6);
    EXPECT_EQ(fake::text("WIRELESS_REP", "WEPKey3"), "key three");
    EXPECT_EQ(fake::text("WIRELESS_REP", "PreSharedKey"), "12345678");
    EXPECT_EQ(fake::number("WIRELESS_REP", "Mode"), 0);
}

TEST_P(SetWifi, MirrorsMissingKeysAsEmpty) {
    for (const char* key : {"WEPKey0", "WEPKey1", "WEPKey2", "WEPKey3", "PreSharedKey"}) fake::erase("WIRELESS", key);
    fake::setFlag("WIRELESS_REP", "SameWithClient", 1);
    fake::setText("WIRELESS_REP", "WEPKey1", "left over");
    EXPECT_TRUE(gives(0, good()));
    EXPECT_EQ(fake::text("WIRELESS_REP", "WEPKey1"), "");
    EXPECT_EQ(fake::text("WIRELESS_REP", "PreSharedKey"), "");
    EXPECT_EQ(fake::writes().size(), 8U + 12U);
}

TEST_P(SetWifi, MirrorsATextThatTheStoreDoesNotEndUpTo255Bytes) {
    fake::setFlag("WIRELESS_REP", "SameWithClient", 1);
    fake::setText("WIRELESS", "WEPKey0", std::string(256, 'k'));
    EXPECT_TRUE(gives(0, good()));
    EXPECT_EQ(fake::text("WIRELESS_REP", "WEPKey0"), std::string(255, 'k'));
}

// The network's name ends at its NUL or at 255 bytes, wherever the fields behind it begin.
TEST_P(SetWifi, TakesTheSsidPastItsField) {
    for (const std::size_t length : {0, 1, 34, 35, 36, 37, 38, 39, 40, 100, 254, 255, 256, 600, 872}) {
        SCOPED_TRACE(length);
        Packet packet = good().fill(152, 872, 0).fill(152, length, 's');
        std::string name(length, 's');
        for (std::size_t offset = 188; offset <= 190; ++offset) {  // a mode, a code and a format that are accepted
            if (length <= offset - 152) continue;
            packet.put(offset, {1});
            name[offset - 152] = '\x01';
        }
        EXPECT_TRUE(gives(0, packet));
        EXPECT_EQ(fake::text("WIRELESS", "SSID"), name.substr(0, 255));
    }
}

TEST_P(SetWifi, GoesOnAfterAFailedWrite) {
    fake::setFlag("WIRELESS_REP", "SameWithClient", 1);
    for (int nth = 1; nth <= 21; ++nth) {
        fake::failCall("cfgWrite", nth, EIO);
        EXPECT_TRUE(gives(0, psk()));
        EXPECT_EQ(fake::writes().size(), 21U);
    }
}

// Sixty-four times "A" is Base64 of no text at all, which is what the store then holds.
TEST_P(SetWifi, SurvivesRequestsWithoutANul) {
    fake::erase("USER_ADMIN", "Username1");
    fake::erase("USER_ADMIN", "Password1");
    const Packet packet = request(set()).fill(22, 1002, 'A').put(150, {1, 6});
    EXPECT_TRUE(gives(0, Packet(packet).put(188, {0x01, 0x01, 0x01})));
    EXPECT_EQ(fake::text("WIRELESS", "SSID"), std::string(36, 'A') + "\x01\x01\x01" + std::string(216, 'A'));
    for (const std::uint8_t active : Bytes{0x01, 0x11, 0x21, 0x31}) {
        EXPECT_TRUE(gives(211, Packet(packet).put(188, {0x11, 0x11, active})));
    }
    EXPECT_TRUE(gives(210, Packet(packet).put(188, {0x41, 0x01, 0x01})));
    EXPECT_TRUE(gives(202, Packet(packet).put(151, {'A'})));
    EXPECT_TRUE(gives(201, Packet(packet).put(150, {'A'})));
}

}  // namespace
}  // namespace unit
