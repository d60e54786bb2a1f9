#include "qvpctl/text.h"

#include <gtest/gtest.h>

#include "datagrams.h"

class Text : public testing::Test {
protected:
    static void SetUpTestSuite() { useUtf8(); }
};

TEST_F(Text, IsMadePrintable) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"Front door", "Front door"},
        {"\x1b[2J", "\\x1B[2J"},                       // an escape sequence
        {std::string("a\0b", 3), "a\\x00b"},           // NUL
        {"a\tb\r\nc\x7f", "a\\x09b\\x0D\\x0Ac\\x7F"},  // controls of ASCII
        {"a\\x1B", "a\\\\x1B"},                        // what looks like an escape
        {"\xc2\x9b"                                    // the control sequence introducer
         "2J",
         "\\u{9B}2J"},
        {"T\xc3\xbcr", "T\xc3\xbcr"},                              // two bytes
        {"\xe5\x89\x8d\xe9\x97\xa8", "\xe5\x89\x8d\xe9\x97\xa8"},  // three bytes
        {"\xf0\x9f\x93\xb7", "\xf0\x9f\x93\xb7"},                  // four bytes
        {"e\xcc\x81", "e\xcc\x81"},                                // a combining accent
        {"\xe2\x80\xae"                                            // right-to-left override
         "gpj",
         "\\u{202E}gpj"},
        {"\xe2\x80\x8b\xef\xbb\xbf\xe2\x80\xa8", "\\u{200B}\\u{FEFF}\\u{2028}"},  // hidden characters
        {"\xff\xfe", "\\xFF\\xFE"},                                               // never in UTF-8
        {"\xc3", "\\xC3"},                                                        // cut short
        {"\xe5\x89z", "\\xE5\\x89z"},                                             // cut short by another
        {"\xc0\xaf", "\\xC0\\xAF"},                                               // overlong
        {"\xed\xa0\x80", "\\xED\\xA0\\x80"},                                      // a surrogate
        {"\xf4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"},                             // above the last character
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(printable(text), expected);
    }
}

TEST_F(Text, NeverHoldsAControlByteOnceItIsPrintable) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string text = {static_cast<char>(first), static_cast<char>(second), 'x'};
            for (const char byte : printable(text)) {
                const auto value = static_cast<unsigned char>(byte);
                ASSERT_TRUE(value >= 0x20 && value != 0x7F) << first << " " << second;
            }
        }
    }
}

TEST_F(Text, WidthIsInTerminalColumns) {
    const std::pair<std::string, size_t> rows[] = {
        {"", 0}, {"abc", 3}, {"T\xc3\xbcr", 3}, {"e\xcc\x81", 1}, {"\xe5\x89\x8d", 2},
    };
    for (const auto& [text, width] : rows) {
        EXPECT_EQ(displayWidth(text), width) << text;
    }
}

TEST_F(Text, OfAFieldEndsAtItsNulOrItsEnd) {
    EXPECT_EQ(fieldText(Bytes{'a', 'b', 0, 'c'}), "ab");
    EXPECT_EQ(fieldText(Bytes{'a', 'b'}), "ab");
    EXPECT_EQ(fieldText(Bytes{0, 'b'}), "");
    EXPECT_EQ(fieldText(Bytes{}), "");
}

TEST_F(Text, OfAddresses) {
    EXPECT_EQ(macText({{0x00, 0x01, 0x0F, 0xA0, 0xFE, 0xFF}}), "00:01:0f:a0:fe:ff");
    EXPECT_EQ(addressText({{0, 10, 200, 255}}), "0.10.200.255");
}

TEST_F(Text, OfATimeIsIsoOrNothing) {
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
