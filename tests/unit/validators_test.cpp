// The small checks on the fields of a request.
#include "util/validators.h"

#include <string>
#include <vector>

#include "support/packet.h"

namespace unit {
namespace {

TEST(CheckMacAddress, ComparesSixBytesOfTwoStringsThatHaveThem) {
    const Bytes mac{0x02, 0x00, 0x5E, 0x10, 0x20, 0x30, 0x40};
    EXPECT_EQ(checkMacAddress(mac.data(), 6, mac.data(), 6), 0);
    EXPECT_EQ(checkMacAddress(mac.data(), 7, mac.data(), 6), 0);
    EXPECT_EQ(checkMacAddress(mac.data(), 6, mac.data(), 7), 0);
    for (const int length : {5, 1, 0, -1}) {
        EXPECT_EQ(checkMacAddress(mac.data(), length, mac.data(), 6), -1) << length;
        EXPECT_EQ(checkMacAddress(mac.data(), 6, mac.data(), length), -1) << length;
    }
    EXPECT_EQ(checkMacAddress(nullptr, 6, mac.data(), 6), -1);
    EXPECT_EQ(checkMacAddress(mac.data(), 6, nullptr, 6), -1);
    EXPECT_EQ(checkMacAddress(nullptr, 6, nullptr, 6), -1);
}

TEST(CheckMacAddress, FindsADifferenceInEachByteOfTheSix) {
    const Bytes mac{0x02, 0x00, 0x5E, 0x10, 0x20, 0x30, 0x40};
    for (std::size_t at = 0; at < 7; ++at) {
        Bytes other = mac;
        other[at] = static_cast<std::uint8_t>(other[at] ^ 0x80);
        EXPECT_EQ(checkMacAddress(mac.data(), 7, other.data(), 7), at < 6 ? -1 : 0) << at;
    }
}

TEST(CheckMacAddress, GivesTheBroadcastAddressNoSpecialMeaning) {
    const Bytes mac{0x02, 0x00, 0x5E, 0x10, 0x20, 0x30};
    const Bytes broadcast(6, 0xFF);
    EXPECT_EQ(checkMacAddress(broadcast.data(), 6, mac.data(), 6), -1);
    EXPECT_EQ(checkMacAddress(broadcast.data(), 6, broadcast.data(), 6), 0);
}

TEST(Rtrim, StripsBlanksThatOnlyNulsFollow) {
    const struct {
        std::string before, after;
    } rows[] = {
        {"ab  ", "ab"},
        {"ab", "ab"},
        {std::string("ab  \0\0\0", 7), "ab"},
        {std::string("ab \0 \0", 6), "ab"},
        {"ab \t", "ab \t"},
        {"ab \r", "ab \r"},
        {"ab \n", "ab \n"},
        {" a b ", " a b"},
        {"    ", ""},
        {std::string(4, '\0'), ""},
        {" ", ""},
        {std::string("a \0b", 4), std::string("a \0b", 4)},
    };
    for (const auto& row : rows) {
        std::vector<char> field(row.before.begin(), row.before.end());
        rtrim(field.data(), static_cast<int>(field.size()));
        std::string expected = row.after;
        expected.resize(row.before.size());
        EXPECT_EQ(std::string(field.begin(), field.end()), expected) << testing::PrintToString(row.before);
    }
}

TEST(Rtrim, TouchesNothingOfAnEmptyFieldOrBehindTheField) {
    char text[] = "ab  ";
    rtrim(text, 0);
    EXPECT_STREQ(text, "ab  ");
    rtrim(text, 3);
    EXPECT_EQ(std::string(text, 4), std::string("ab\0 ", 4));
}

TEST(CheckHex, TakesDigitsOfBothCasesOnly) {
    EXPECT_EQ(checkHex(nullptr), -1);
    EXPECT_EQ(checkHex(""), 0);
    EXPECT_EQ(checkHex("0123456789abcdefABCDEF"), 0);
    EXPECT_EQ(checkHex("0x1F"), -1);
    for (int byte = 1; byte < 256; ++byte) {
        const bool digit =
            (byte >= 0x30 && byte <= 0x39) || (byte >= 0x41 && byte <= 0x46) || (byte >= 0x61 && byte <= 0x66);
        for (const std::string& around : {std::string(), std::string("0")}) {
            const std::string text = around + static_cast<char>(byte);
            EXPECT_EQ(checkHex(text.c_str()), digit ? 0 : -1) << byte;
        }
    }
}

TEST(CheckAscii, TakesBytesFrom32To127) {
    EXPECT_EQ(checkAscii(nullptr), -1);
    EXPECT_EQ(checkAscii(""), 0);
    EXPECT_EQ(checkAscii("a\xC3\xA4"), -1);
    EXPECT_EQ(checkAscii("\x7F"), 0);
    for (int byte = 1; byte < 256; ++byte) {
        const int expected = byte >= 32 && byte <= 127 ? 0 : -1;
        const std::string text = std::string("a") + static_cast<char>(byte) + "b";
        EXPECT_EQ(checkAscii(text.c_str()), expected) << byte;
    }
}

}  // namespace
}  // namespace unit
