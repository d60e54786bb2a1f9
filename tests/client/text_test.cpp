#include "client/text.h"

#include <gtest/gtest.h>

#include "datagrams.h"

using namespace client;

TEST(Text, OfAFieldEndsAtItsNulOrItsEnd) {
    EXPECT_EQ(fieldText(Bytes{'a', 'b', 0, 'c'}), "ab");
    EXPECT_EQ(fieldText(Bytes{'a', 'b'}), "ab");
    EXPECT_EQ(fieldText(Bytes{0, 'b'}), "");
    EXPECT_EQ(fieldText(Bytes{}), "");
}

TEST(Text, IsPutIntoAFieldAndNeverBehindIt) {
    Bytes field(4);
    client::putText(field, "ab");
    EXPECT_EQ(field, (Bytes{'a', 'b', 0, 0}));
    Bytes bytes(5, 9);
    client::putText(std::span(bytes).first(4), "abcdef");
    EXPECT_EQ(bytes, (Bytes{'a', 'b', 'c', 'd', 9}));
}

TEST(Text, OfAMac) {
    EXPECT_EQ(macText({{0x00, 0x01, 0x0F, 0xA0, 0xFE, 0xFF}}), "00:01:0f:a0:fe:ff");
    for (const char* text : {"00:01:0f:a0:fe:ff", "00-01-0F-A0-FE-FF", "00:01:0f:A0:fE:Ff"}) {
        ASSERT_TRUE(parseMac(text)) << text;
        EXPECT_EQ(macText(*parseMac(text)), "00:01:0f:a0:fe:ff");
    }
    for (const char* text : {"", "00:01:0f:a0:fe", "00:01:0f:a0:fe:f", "00:01:0f:a0:fe:fff", "00:01-0f:a0:fe:ff",
                             "00010fa0feff", "00:01:0f:a0:fe:fg", "0 :01:0f:a0:fe:ff", "00.01.0f.a0.fe.ff",
                             "-0:01:0f:a0:fe:ff", "00:01:0f:a0:fe:+f", "00:01:0f:a0:fe ff"}) {
        EXPECT_FALSE(parseMac(text)) << text;
    }
}

TEST(Text, OfAnAddress) {
    EXPECT_EQ(addressText({{0, 10, 200, 255}}), "0.10.200.255");
    for (const char* text : {"0.0.0.0", "192.0.2.10", "255.255.255.255"}) {
        ASSERT_TRUE(parseAddress(text)) << text;
        EXPECT_EQ(addressText(*parseAddress(text)), text);
    }
    for (const char* text : {"", "192.0.2", "192.0.2.256", "192.0.2.010", "192.0.2.1 ", " 192.0.2.1", "192.0.2.1.1",
                             "0x7f.0.0.1", "2130706433", "::1", "192.0.2.-1", "a.b.c.d"}) {
        EXPECT_FALSE(parseAddress(text)) << text;
    }
    EXPECT_FALSE(parseAddress(std::string_view("192.0.2.1\0x", 11)));
}

TEST(Text, AnAddressIsSetUnlessItIsZero) {
    EXPECT_FALSE(isSet({{0, 0, 0, 0}}));
    EXPECT_TRUE(isSet({{0, 0, 0, 1}}));
    EXPECT_TRUE(isSet({{1, 0, 0, 0}}));
}

TEST(Text, OfAPrefix) {
    const std::pair<int, const char*> rows[] = {
        {0, "0.0.0.0"},        {1, "128.0.0.0"},        {8, "255.0.0.0"},        {15, "255.254.0.0"},
        {24, "255.255.255.0"}, {30, "255.255.255.252"}, {31, "255.255.255.254"}, {32, "255.255.255.255"},
    };
    for (const auto& [length, mask] : rows) {
        EXPECT_EQ(addressText(maskOf(length)), mask);
        EXPECT_EQ(prefixLength(*parseAddress(mask)), length);
    }
    for (const char* mask : {"255.0.255.0", "0.0.0.1", "255.255.255.1", "127.255.255.255"}) {
        EXPECT_EQ(prefixLength(*parseAddress(mask)), std::nullopt) << mask;
    }
}

TEST(Text, SameNetwork) {
    struct Row {
        const char *one, *other, *mask;
        bool isSame;
    };
    const Row rows[] = {
        {"192.0.2.10", "192.0.2.200", "255.255.255.0", true},
        {"192.0.2.10", "192.0.3.10", "255.255.255.0", false},
        {"198.18.0.1", "198.19.255.254", "255.254.0.0", true},
        {"198.18.0.1", "198.20.0.1", "255.254.0.0", false},
        {"192.0.2.10", "10.0.0.1", "0.0.0.0", true},
        {"192.0.2.10", "192.0.2.10", "255.255.255.255", true},
        {"192.0.2.10", "192.0.2.11", "255.255.255.255", false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(isSameNetwork(*parseAddress(row.one), *parseAddress(row.other), *parseAddress(row.mask)), row.isSame)
            << row.one << " " << row.other;
    }
}

TEST(Text, HostAddress) {
    struct Row {
        const char* address;
        int prefix;
        bool isHost;
    };
    const Row rows[] = {
        {"192.168.1.20", 24, true},  {"192.168.1.0", 24, false},   {"192.168.1.255", 24, false},
        {"192.168.1.255", 16, true}, {"192.168.0.0", 16, false},   {"192.168.255.255", 16, false},
        {"10.0.0.1", 30, true},      {"10.0.0.3", 30, false},      {"0.0.0.1", 24, false},
        {"127.0.0.1", 8, false},     {"126.255.255.254", 8, true}, {"128.0.0.1", 8, true},
        {"223.255.255.1", 24, true}, {"224.0.0.1", 24, false},     {"255.255.255.254", 24, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(isHostAddress(*parseAddress(row.address), row.prefix), row.isHost)
            << row.address << "/" << row.prefix;
    }
}

TEST(Text, OfATimeIsIsoOrNothing) {
    struct Row {
        const char* digits;
        std::optional<std::string> iso;
    };
    const Row rows[] = {
        {"20260131235958", "2026-01-31T23:59:58"}, {"00010101000000", "0001-01-01T00:00:00"},
        {"20161231235960", "2016-12-31T23:59:60"}, {"", std::nullopt},
        {"2026013123595", std::nullopt},           {"202601312359580", std::nullopt},
        {"2026 131235958", std::nullopt},          {"2026-131235958", std::nullopt},
        {"20260031235958", std::nullopt},          {"20261331235958", std::nullopt},
        {"20260100235958", std::nullopt},          {"20260132235958", std::nullopt},
        {"20260131245958", std::nullopt},          {"20260131236058", std::nullopt},
        {"20260131235961", std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(isoTime(row.digits), row.iso) << row.digits;
    }
}

TEST(Text, Base64) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"admin", "YWRtaW4="},
        {std::string("\0\0\0", 3), "AAAA"},
        {"\xFB\xEF\xFF", "++//"},
        {"\xFF", "/w=="},
    };
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(base64(bytes), text);
    }
}
