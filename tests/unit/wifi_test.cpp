// The wireless settings in full: reading them.
#include <algorithm>

#include "support/wireless_rows.h"

using fake::Events;

namespace unit {
namespace {

class GetWifi : public BothFamilies {
protected:
    const CommandRow& get() const { return row("get_wifi_info"); }
    Outcome callGet() const { return call(get().handler, request(get()).bytes()); }

    // What a get replies when nothing is stored.
    Packet emptyReply() const {
        return reply(get()).put(260, {0xFF, 0x00, 0x00, 0x00, 0x03, 0x0F, 0x1B, 0x03, 0x03, 0x0F});
    }
};

INSTANTIATE_TEST_SUITE_P(Families, GetWifi, bothFamilies(), familyName);

TEST_P(GetWifi, TellsWhatIsStored) {
    seedWireless();
    const Outcome outcome = callGet();
    EXPECT_TRUE(replies(emptyReply()
                            .put(22, {1, 11})
                            .put(24, std::string("old network"))
                            .put(60, {0x31, 0x15, 0x31})
                            .put(64, std::string("key zero"))
                            .put(96, std::string("key one"))
                            .put(128, std::string("key two"))
                            .put(160, std::string("key three"))
                            .put(192, std::string("old secret")),
                        outcome));
    EXPECT_TRUE(traces(get(), 1, outcome));
    EXPECT_EQ(workEvents(),
              (Events{"cfgRead WIRELESS Enable", "cfgRead WIRELESS Channel", "cfgRead WIRELESS SSID",
                      "cfgRead WIRELESS Mode", "cfgRead WIRELESS Authentication", "cfgRead WIRELESS Encryption",
                      "cfgRead WIRELESS WEPKeyFormat", "cfgRead WIRELESS WEPKeyLength", "cfgRead WIRELESS WEPActiveKey",
                      "cfgRead WIRELESS WEPKey0", "cfgRead WIRELESS WEPKey1", "cfgRead WIRELESS WEPKey2",
                      "cfgRead WIRELESS WEPKey3", "cfgRead WIRELESS PreSharedKey"}));
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

TEST_P(GetWifi, TellsNothingButCapabilitiesOfAnEmptyStore) { EXPECT_TRUE(replies(emptyReply(), callGet())); }

TEST_P(GetWifi, CutsTextsToTheirFields) {
    const struct {
        const char* key;
        std::size_t offset, most;
    } rows[] = {
        {"SSID", 24, 35},     {"WEPKey0", 64, 31},  {"WEPKey1", 96, 31},
        {"WEPKey2", 128, 31}, {"WEPKey3", 160, 31}, {"PreSharedKey", 192, 67},
    };
    for (const auto& field : rows) {
        for (const std::size_t length : {std::size_t{0}, std::size_t{1}, field.most - 1, field.most, field.most + 1,
                                         field.most + 2, std::size_t{255}}) {
            SCOPED_TRACE(field.key + std::string(" ") + std::to_string(length));
            fake::setText("WIRELESS", field.key, std::string(length, 'x'));
            EXPECT_TRUE(replies(emptyReply().fill(field.offset, std::min(length, field.most), 'x'), callGet()));
        }
        fake::erase("WIRELESS", field.key);
    }
}

TEST_P(GetWifi, TellsAllOfTheEnableByteAndTheLowByteOfTheChannel) {
    for (int value = -1; value <= 0x10001; value += value < 300 ? 1 : 0x3F01) {
        SCOPED_TRACE(value);
        const auto lowByte = static_cast<std::uint8_t>(value & 0xFF);
        fake::setFlag("WIRELESS", "Enable", lowByte);
        fake::setNumber("WIRELESS", "Channel", value);
        EXPECT_TRUE(replies(emptyReply().put(22, {lowByte, lowByte}), callGet()));
    }
}

TEST_P(GetWifi, NumbersAuthenticationAsTheWireDoes) {
    const std::pair<std::int32_t, std::uint8_t> rows[] = {
        {0, 0},  {1, 1},   {2, 3},   {3, 4},  {4, 5},  {5, 0},         {6, 0},         {15, 0},
        {16, 0}, {256, 0}, {258, 0}, {-1, 0}, {-2, 0}, {INT32_MAX, 0}, {INT32_MIN, 0},
    };
    for (const auto& [stored, wire] : rows) {
        SCOPED_TRACE(stored);
        fake::setNumber("WIRELESS", "Authentication", stored);
        EXPECT_TRUE(replies(emptyReply().put(61, {wire}), callGet()));
    }
}

// Stored numbers share bytes unmasked: what is too large for its half spills into the other.
TEST_P(GetWifi, SpillsNumbersOutOfRange) {
    const struct {
        const char *low, *high;
        std::size_t offset;
    } bytes[] = {{"Mode", "Encryption", 60}, {nullptr, "WEPKeyLength", 61}, {"WEPKeyFormat", "WEPActiveKey", 62}};
    const struct {
        std::int32_t low, high;
        std::uint8_t told;
    } rows[] = {
        {0, 0, 0x00},
        {1, 0, 0x01},
        {0, 1, 0x10},
        {15, 15, 0xFF},
        {0, 0x12, 0x20},
        {0x12, 0, 0x12},
        {0x12, 4, 0x52},
        {0x30, 0x05, 0x70},
        {0x100, 0x10, 0x00},
        {0x1FF, 0, 0xFF},
        {-1, 0, 0xFF},
        {0, -1, 0xF0},
        {0x7FFFFF00, 0x7FFFFF01, 0x10},
        {INT32_MIN, INT32_MIN + 2, 0x20},
        {0, 0xFF, 0xF0},
    };
    for (const auto& byte : bytes) {
        for (const auto& wanted : rows) {
            if (byte.low == nullptr && wanted.low != 0) continue;
            SCOPED_TRACE(byte.high + std::string(" ") + std::to_string(wanted.low) + " " + std::to_string(wanted.high));
            if (byte.low != nullptr) fake::setNumber("WIRELESS", byte.low, wanted.low);
            fake::setNumber("WIRELESS", byte.high, wanted.high);
            EXPECT_TRUE(replies(emptyReply().put(byte.offset, {wanted.told}), callGet()));
        }
        if (byte.low != nullptr) fake::erase("WIRELESS", byte.low);
        fake::erase("WIRELESS", byte.high);
    }
}

TEST_P(GetWifi, TellsEveryPairOfNibbles) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        fake::setNumber("WIRELESS", "Mode", byte % 16);
        fake::setNumber("WIRELESS", "Encryption", byte / 16);
        fake::setNumber("WIRELESS", "WEPKeyFormat", byte / 16);
        fake::setNumber("WIRELESS", "WEPActiveKey", byte % 16);
        const auto swapped = static_cast<std::uint8_t>(byte % 16 * 16 + byte / 16);
        EXPECT_TRUE(replies(emptyReply().put(60, {static_cast<std::uint8_t>(byte), 0, swapped}), callGet()));
        fake::clearEvents();
    }
}

TEST_P(GetWifi, SurvivesARequestWithoutANul) {
    fake::erase("USER_ADMIN", "Username1");
    fake::erase("USER_ADMIN", "Password1");
    EXPECT_TRUE(replies(emptyReply(), call(get().handler, request(get()).fill(22, 1002, 'A').bytes())));
}

}  // namespace
}  // namespace unit
