#include "client/commands/wireless.h"

#include <gtest/gtest.h>

#include <set>

#include "datagrams.h"

using namespace client;

static WifiSettings settings() {
    return {.enable = false,
            .channel = 11,
            .ssid = "Workshop",
            .mode = 1,
            .security = {4, 3},
            .wepKeyLength = 1,
            .wepKeyFormat = 1,
            .activeWepKey = 2,
            .wepKeys = {Secret("zero!"), Secret("one!!"), Secret("0123456789abcdef0123456789"), Secret("three")},
            .preSharedKey = Secret("correct horse battery")};
}

TEST(Wireless, RequestHoldsEveryFieldAndEnables) {
    Bytes expected = protectedBytes(402);
    put(expected, 150, {1, 11});
    putText(expected, 152, "Workshop");
    put(expected, 188, {0x31, 0x14, 0x21, 0});
    putText(expected, 192, "zero!");
    putText(expected, 224, "one!!");
    putText(expected, 256, "0123456789abcdef0123456789");
    putText(expected, 288, "three");
    putText(expected, 320, "correct horse battery");
    EXPECT_EQ(encodeWifi({"admin", Secret("secret")}, settings()), expected);
}

TEST(Wireless, ReplyHoldsEveryField) {
    Bytes reply = replyTo(0x00A8, 274);
    put(reply, 22, {1, 6});
    putText(reply, 24, "Workshop");
    put(reply, 60, {0x21, 0x13, 0x31});
    putText(reply, 64, "zero");
    putText(reply, 96, "one");
    putText(reply, 128, "two");
    putText(reply, 160, "three");
    putText(reply, 192, "correct horse battery");
    const WifiSettings wifi = decodeWifi(reply);
    EXPECT_TRUE(wifi.enable);
    EXPECT_EQ(wifi.channel, 6);
    EXPECT_EQ(wifi.ssid, "Workshop");
    EXPECT_EQ(wifi.mode, 1);
    EXPECT_EQ(wifi.security, (WifiSecurity{3, 2}));
    EXPECT_EQ(wifi.wepKeyLength, 1);
    EXPECT_EQ(wifi.wepKeyFormat, 1);
    EXPECT_EQ(wifi.activeWepKey, 3);
    const char* const keys[] = {"zero", "one", "two", "three"};
    for (size_t i = 0; i < 4; i++) EXPECT_EQ(wifi.wepKeys[i].reveal(), keys[i]);
    EXPECT_EQ(wifi.preSharedKey.reveal(), "correct horse battery");
}

TEST(Wireless, ReplyWithoutNulsKeepsToItsFields) {
    Bytes reply = replyTo(0x00A8, 274);
    put(reply, 22, Bytes(252, 'x'));
    const WifiSettings wifi = decodeWifi(reply);
    EXPECT_EQ(wifi.ssid, std::string(36, 'x'));
    EXPECT_EQ(wifi.wepKeys[3].reveal(), std::string(32, 'x'));
    EXPECT_EQ(wifi.preSharedKey.reveal(), std::string(68, 'x'));
    EXPECT_THROW(decodeWifi(replyTo(0x00A8, 273)), std::length_error);
}

TEST(Wireless, PreSharedKeys) {
    const std::string good[] = {"12345678", std::string(63, 'x'), std::string(64, 'a'),
                                std::string(32, '0') + std::string(32, 'F'), "with a blank ~\x7f"};
    for (const std::string& key : good) EXPECT_EQ(checkPreSharedKey(Secret(key)), "") << key;
    const std::string bad[] = {"",
                               "1234567",
                               std::string(65, 'a'),
                               std::string(64, 'g'),
                               std::string(63, 'a') + " ",
                               "tab\tinside",
                               "eight\x80--",
                               "T\xc3\xbcr------"};
    for (const std::string& key : bad) EXPECT_NE(checkPreSharedKey(Secret(key)), "") << key;
}

TEST(Wireless, WepKeysAndTheirKinds) {
    struct Row {
        std::string key;
        uint8_t length, format;
    };
    const Row good[] = {
        {"5char", 0, 0}, {"thirteenchars", 1, 0}, {"0123456789", 0, 1}, {"0123456789abcdefABCDEF0123", 1, 1}};
    for (const Row& row : good) {
        EXPECT_EQ(checkWepKey(Secret(row.key)), "") << row.key;
        EXPECT_EQ(kindOfWepKey(Secret(row.key)).length, row.length) << row.key;
        EXPECT_EQ(kindOfWepKey(Secret(row.key)).format, row.format) << row.key;
    }
    for (const char* key : {"", "four", "6chars", "twelve chars", "fourteen chars", "012345678", "01234567890",
                            "012345678g", "0123456789abcdefABCDEF012", "0123456789abcdefABCDEF01234",
                            "0123456789abcdefABCDEF012x", "tab\t5", "T\xc3\xbcr!"}) {
        EXPECT_NE(checkWepKey(Secret(key)), "") << key;
    }
}

TEST(Wireless, NoFaultHoldsTheKey) {
    for (const std::string& key : {std::string("MARKED"), "MARKED" + std::string(60, '-'), std::string("MARKED\t--")}) {
        EXPECT_EQ(checkPreSharedKey(Secret(key)).find("MARK"), std::string::npos);
        EXPECT_EQ(checkWepKey(Secret(key)).find("MARK"), std::string::npos);
    }
}

TEST(WifiSecurity, EveryNameHasItsCodes) {
    const std::pair<const char*, WifiSecurity> rows[] = {
        {"none", {0, 0}},       {"wep", {0, 1}},           {"wep-shared", {1, 1}},   {"wpa-tkip", {3, 2}},
        {"wpa-aes", {3, 3}},    {"wpa-mixed", {3, 4}},     {"wpa2-tkip", {4, 2}},    {"wpa2-aes", {4, 3}},
        {"wpa2-mixed", {4, 4}}, {"wpa-wpa2-tkip", {5, 2}}, {"wpa-wpa2-aes", {5, 3}}, {"wpa-wpa2-mixed", {5, 4}},
    };
    EXPECT_EQ(wifiSecurities().size(), std::size(rows));
    for (const auto& [name, codes] : rows) {
        EXPECT_EQ(nameOf(codes), name);
        EXPECT_EQ(parseWifiSecurity(name), codes);
    }
    EXPECT_EQ(nameOf({2, 7}), "authentication 2, encryption 7");
    for (const char* name : {"", "WPA2", "wpa2", "authentication 2, encryption 7"})
        EXPECT_FALSE(parseWifiSecurity(name));
}

TEST(WifiSecurity, EncryptionDecidesAboutTheKey) {
    for (uint8_t encryption = 0; encryption < 16; encryption++) {
        EXPECT_EQ(usesWep({0, encryption}), encryption == 1);
        EXPECT_EQ(usesPreSharedKey({0, encryption}), encryption == 2 || encryption == 3 || encryption == 4);
    }
}
