// From a line of the driver's list to an entry of the page.
#include "support/site_list.h"

namespace unit {
namespace {

class SiteLine : public SiteSurveyTest {
protected:
    // The page of these lines behind a heading tells these entries.
    testing::AssertionResult become(const std::string& lines, const std::vector<Bytes>& entries) const {
        return replies(page(entries, false), fill(heading() + lines));
    }
};

INSTANTIATE_TEST_SUITE_P(Families, SiteLine, bothFamilies(), familyName);

struct SecurityRow {
    const char* column;
    std::uint8_t authentication, cipher;
};

TEST_P(SiteLine, ClassifiesTheSecurityColumn) {
    const SecurityRow rows[] = {
        {"NONE", 0, 0},
        {"NONE WEP", 0, 0},
        {"WEP NONE", 0, 0},
        {"NONE/WPA2PSK/AES", 0, 0},
        {"xNONEx", 0, 0},
        {"WEP", 0, 1},
        {"WEP/TKIPAES", 0, 1},
        {"WPA2PSK/WEP", 0, 1},
        {"xxWEPxx", 0, 1},
        {"WPAPSK", 3, 4},
        {"WPAPSK/TKIP", 3, 2},
        {"WPAPSK/AES", 3, 3},
        {"WPAPSK/TKIPAES", 3, 4},
        {"WPAPSK/WPA2PSK/AES", 3, 3},
        {"WPA2PSK/WPAPSK/TKIP", 3, 2},
        {"WPA1PSK/WPAPSK/TKIP", 3, 2},
        {"WPA1PSKWPA2PSK", 5, 4},
        {"WPA1PSKWPA2PSK/TKIP", 5, 2},
        {"WPA1PSKWPA2PSK/AES", 5, 3},
        {"WPA1PSKWPA2PSK/TKIPAES", 5, 4},
        {"WPA2PSKWPA1PSK/AESTKIP", 5, 4},
        {"WPA2PSKxxWPA1PSKxxAES", 5, 3},
        {"WPA1PSK", 15, 15},
        {"WPA1PSK/TKIP", 15, 15},
        {"WPA1PSK/AES", 15, 15},
        {"WPA1PSK/TKIPAES", 15, 15},
        {"WPA2PSK", 4, 4},
        {"WPA2PSK/TKIP", 4, 2},
        {"WPA2PSK/AES", 4, 3},
        {"WPA2PSK/TKIPAES", 4, 4},
        {"AES WPA2PSK TKIP", 4, 4},
        {"", 15, 15},
        {"WPA", 15, 15},
        {"WPA2", 15, 15},
        {"WPA3PSK/AES", 15, 15},
        {"TKIP", 15, 15},
        {"AES", 15, 15},
        {"none", 15, 15},
        {"wep", 15, 15},
        {"wpa2psk/aes", 15, 15},
        {"WPA2PSK/aes", 4, 4},
        {"W EP", 15, 15},
        {"xxxxxxxxxxxxxxxxWPA2PSK", 4, 4},     // to the column's last byte
        {"xxxxxxxxxxxxxxxxxWPA2PSK", 15, 15},  // past it
        {"WPA2PSK/xxxxxxxxxxxxAES", 4, 3},
        {"WPA2PSK/xxxxxxxxxxxxxAES", 4, 4},
    };
    for (const SecurityRow& wanted : rows) {
        Site site;
        site.security = wanted.column;
        const auto typeAndCipher = static_cast<std::uint8_t>(wanted.cipher << 4);
        const auto authAndChannel = static_cast<std::uint8_t>(0x60 | wanted.authentication);
        EXPECT_TRUE(become(siteLine(site), {entry("garden", 81, typeAndCipher, authAndChannel)})) << wanted.column;
    }
}

TEST_P(SiteLine, ReadsChannelAndSignalAsDecimalNumbers) {
    const struct {
        const char* text;
        int value;
    } rows[] = {
        {"0", 0},     {"1", 1},     {"6", 6},     {"13", 13},     {"15", 15},  {"16", 16}, {"36", 36}, {"165", 165},
        {"255", 255}, {"256", 256}, {"300", 300}, {"9999", 9999}, {" 7", 7},   {"08", 8},  {"+9", 9},  {"-1", -1},
        {"-60", -60}, {"", 0},      {"x", 0},     {"5x", 5},      {"0x1F", 0}, {"1 2", 1}, {"  3", 3}, {"\t4", 4},
    };
    for (const auto& number : rows) {
        Site site;
        site.channel = number.text;
        const auto channel = static_cast<std::uint8_t>((number.value * 16) & 0xF0);
        EXPECT_TRUE(become(siteLine(site), {entry("garden", 81, 0x30, channel | 0x04)})) << number.text;
        site = {};
        site.signal = number.text;
        const auto signal = static_cast<std::uint8_t>(number.value & 0xFF);
        EXPECT_TRUE(become(siteLine(site), {entry("garden", signal, 0x30, 0x64)})) << number.text;
    }
    Site loud;
    loud.signal = "9876543210";  // low byte 0xEA
    EXPECT_TRUE(become(siteLine(loud), {entry("garden", 0xEA, 0x30, 0x64)}));
}

// Authentication and channel share a byte, and a high channel's bits are cut.
TEST_P(SiteLine, JoinsEveryChannelWithTheAuthentication) {
    for (int channel = 0; channel < 1000; ++channel) {
        Site site;
        site.channel = std::to_string(channel);
        const auto joined = static_cast<std::uint8_t>(((channel << 4) & 0xF0) | 0x04);
        EXPECT_TRUE(become(siteLine(site), {entry("garden", 81, 0x30, joined)})) << channel;
    }
}

TEST_P(SiteLine, CutsAndStripsTheSsid) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"a", "a"},
        {std::string(31, 'a'), std::string(31, 'a')},
        {std::string(32, 'a'), std::string(32, 'a')},
        {std::string(33, 'a'), std::string(32, 'a')},
        {std::string(31, 'a') + " b", std::string(31, 'a') + " "},
        {"two words  ", "two words"},
        {"  in front", "  in front"},
        {"tab\t", "tab\t"},
        {"tab \t ", "tab \t"},
        {"caf\xC3\xA9", "caf\xC3\xA9"},
        {"\x01\xFF", "\x01\xFF"},
        {std::string("nul\0hidden", 10), "nul"},
        {std::string("blank  \0", 8), "blank"},
        {std::string("blank  \0hidden", 14), "blank"},
    };
    for (const auto& [ssid, told] : rows) {
        Site site;
        site.ssid = ssid;
        EXPECT_TRUE(become(siteLine(site), {entry(told, 81, 0x30, 0x64)})) << fake::quoted(ssid);
    }
}

TEST_P(SiteLine, MarksEveryTypeWithoutTheWord) {
    const std::pair<const char*, bool> rows[] = {{"In", true},  {"Ad", false}, {"", false},    {"in", false},
                                                 {"IN", false}, {"I", false},  {" In", false}, {"nI", false}};
    for (const auto& [type, infrastructure] : rows) {
        Site site;
        site.type = type;
        const std::uint8_t bits = infrastructure ? 0x30 : 0x31;
        EXPECT_TRUE(become(siteLine(site), {entry("garden", 81, bits, 0x64)})) << type;
    }
    std::string longer = siteLine();
    longer.insert(100, "fra and whatever stands behind the columns");
    EXPECT_TRUE(become(longer, {entry("garden", 81, 0x30, 0x64)}));
}

TEST_P(SiteLine, HasEmptyColumnsWhereItIsShort) {
    const std::string whole = siteLine().substr(0, 100);
    const struct {
        std::size_t length;
        const char* ssid;
        std::uint8_t signal, typeAndCipher, authAndChannel;
    } rows[] = {
        {1, "", 0, 0xF1, 0x6F},         {3, "", 0, 0xF1, 0x6F},         {4, "", 0, 0xF1, 0x6F},
        {5, "g", 0, 0xF1, 0x6F},        {10, "garden", 0, 0xF1, 0x6F},  {37, "garden", 0, 0xF1, 0x6F},
        {57, "garden", 0, 0xF1, 0x6F},  {64, "garden", 0, 0x41, 0x64},  {68, "garden", 0, 0x31, 0x64},
        {80, "garden", 0, 0x31, 0x64},  {81, "garden", 8, 0x31, 0x64},  {82, "garden", 81, 0x31, 0x64},
        {98, "garden", 81, 0x31, 0x64}, {99, "garden", 81, 0x31, 0x64}, {100, "garden", 81, 0x30, 0x64},
    };
    Site other;
    other.ssid = "behind";
    const Bytes behind = entry("behind", 81, 0x30, 0x64);
    for (const auto& wanted : rows) {
        SCOPED_TRACE(wanted.length);
        // A longer line in front, of which nothing may be left over.
        const std::string cut = whole.substr(0, wanted.length);
        const Bytes told = entry(wanted.ssid, wanted.signal, wanted.typeAndCipher, wanted.authAndChannel);
        EXPECT_TRUE(become(siteLine(other) + cut, {behind, told}));
        const std::string padded = cut + std::string(1023 - cut.size(), '\0');
        EXPECT_TRUE(become(siteLine(other) + padded + siteLine(other), {behind, told, behind}));
    }
}

TEST_P(SiteLine, KeepsItsNewlineInAColumnItEndsIn) {
    EXPECT_TRUE(become("6   garden\n", {entry("garden\n", 0, 0xF1, 0x6F)}));
    EXPECT_TRUE(become("\n\n", {paddingEntry(), paddingEntry()}));
    EXPECT_TRUE(become("6   garden \n", {entry("garden \n", 0, 0xF1, 0x6F)}));
}

// At most 1023 bytes with the newline; what is longer goes on as a line of its own.
TEST_P(SiteLine, EndsAtTheLongestLength) {
    const Bytes garden = entry("garden", 81, 0x30, 0x64);
    const std::string front = siteLine().substr(0, 100);
    for (const std::size_t length : {101, 1021, 1022, 1023}) {
        const std::string line = front + std::string(length - 101, '.') + "\n";
        EXPECT_TRUE(become(line + siteLine(), {garden, garden})) << length;
    }
    const std::string full = front + std::string(923, '.');
    EXPECT_TRUE(become(full + "\n" + siteLine(), {garden, paddingEntry(), garden}));
    EXPECT_TRUE(become(full + siteLine() + siteLine(), {garden, garden, garden}));
    EXPECT_TRUE(become(full + full + "\n", {garden, garden, paddingEntry()}));
    EXPECT_TRUE(become(full + "1   rest\n", {garden, entry("rest\n", 0, 0xF1, 0x1F)}));
}

TEST_P(SiteLine, MayHoldNulBytes) {
    const Bytes garden = entry("garden", 81, 0x30, 0x64);
    std::string holed = siteLine();
    holed[10] = holed[11] = holed[40] = holed[90] = '\0';
    EXPECT_TRUE(become(holed, {garden}));
    EXPECT_TRUE(become(std::string(1023, '\0') + siteLine(), {paddingEntry(), garden}));
    EXPECT_TRUE(become(std::string(1022, '\0') + "\n" + siteLine(), {paddingEntry(), garden}));
    EXPECT_TRUE(become(std::string(2047, '\0'), {paddingEntry(), paddingEntry(), paddingEntry()}));
    const std::string inFront = std::string(4, '\0') + siteLine().substr(4);
    EXPECT_TRUE(become(inFront, {entry("garden", 81, 0x30, 0x04)}));
}

TEST_P(SiteLine, OfTheHeadingIsNotTold) {
    const Bytes garden = entry("garden", 81, 0x30, 0x64);
    const auto becomes = [&](const std::string& text) { return replies(page({garden}, false), fill(text)); };
    EXPECT_TRUE(becomes("\n" + siteLine()));
    EXPECT_TRUE(becomes(siteLine() + siteLine()));
    EXPECT_TRUE(becomes(std::string(1023, '\0') + siteLine()));
    EXPECT_TRUE(becomes(std::string(1022, 'h') + "\n" + siteLine()));
    EXPECT_TRUE(becomes(std::string(1023, 'h') + siteLine()));
}

}  // namespace
}  // namespace unit
