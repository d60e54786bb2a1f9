#include "qvpctl/terminal_text.h"

#include <gtest/gtest.h>

class TerminalText : public testing::Test {
protected:
    static void SetUpTestSuite() { useUtf8(); }
};

TEST_F(TerminalText, IsMadePrintable) {
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

TEST_F(TerminalText, NeverHoldsAControlByteOnceItIsPrintable) {
    for (int first = 0; first < 256; first++) {
        for (int second = 0; second < 256; second++) {
            const std::string text = {static_cast<char>(first), static_cast<char>(second), 'x'};
            for (const char byte : printable(text)) {
                const auto value = static_cast<unsigned char>(byte);
                ASSERT_TRUE(value >= 0x20 && value != 0x7F) << first << " " << second;
            }
        }
    }
}

TEST_F(TerminalText, CharactersThatShowNothingOrABlankAreEscaped) {
    const std::pair<std::string, std::string> rows[] = {
        {"\u3164", "\\u{3164}"},           // Hangul filler
        {"a\u115Fb", "a\\u{115F}b"},       // Hangul filler for a leading consonant
        {"a\u1160b", "a\\u{1160}b"},       // ... for a vowel
        {"a\uFFA0b", "a\\u{FFA0}b"},       // halfwidth
        {"a\u00A0b", "a\\u{A0}b"},         // no-break space
        {"a\u2003b", "a\\u{2003}b"},       // em space
        {"a\u2800b", "a\\u{2800}b"},       // blank Braille pattern
        {"a\u3000b", "a\\u{3000}b"},       // ideographic space
        {"a\u034Fb", "a\\u{34F}b"},        // grapheme joiner
        {"a\uFE0Fb", "a\\u{FE0F}b"},       // variation selector
        {"a\U000E0100b", "a\\u{E0100}b"},  // another
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(printable(text), expected);
    }
}

TEST_F(TerminalText, MarksThatPileUpOrStandOnNothingAreEscaped) {
    const std::pair<std::string, std::string> rows[] = {
        {"a\u0301\u0302b", "a\u0301\u0302b"},
        {"a\u0301\u0302\u0303b", "a\u0301\u0302\\u{303}b"},
        {"a\u0301\u0302\u0303\u0304\u0305", "a\u0301\u0302\\u{303}\\u{304}\\u{305}"},
        {"a\u0301\u0302b\u0301\u0302", "a\u0301\u0302b\u0301\u0302"},
        {"\u0301a", "\\u{301}a"},
        {"\u1100\u1161\u11A8", "\u1100\u1161\u11A8"},  // one Hangul syllable in its three letters
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(printable(text), expected);
    }
}

TEST_F(TerminalText, EmojiThatSomeTerminalsJoinAreKeptApart) {
    const std::pair<std::string, std::string> rows[] = {
        {"\U0001F468\u200D\U0001F469", "\U0001F468\\u{200D}\U0001F469"},
        {"\U0001F44D\U0001F3FD", "\U0001F44D\\u{1F3FD}"},
        {"\u2764\uFE0F", "\u2764\\u{FE0F}"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(printable(text), expected);
    }
    EXPECT_EQ(displayWidth(printable("\U0001F468\u200D\U0001F469")), 2u + 8u + 2u);
}

TEST_F(TerminalText, ACellCannotImitateColumns) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"Front door", "Front door"},
        {"Front  door", "Front \\x20door"},
        {"a   b", "a \\x20\\x20b"},
        {" a ", "\\x20a\\x20"},
        {"  ", "\\x20\\x20"},
        {"a\n", "a\\x0A"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(printableCell(text), expected);
    }
}

TEST_F(TerminalText, WidthIsInTerminalColumns) {
    const std::pair<std::string, size_t> rows[] = {
        {"", 0}, {"abc", 3}, {"T\xc3\xbcr", 3}, {"e\xcc\x81", 1}, {"\xe5\x89\x8d", 2},
    };
    for (const auto& [text, width] : rows) {
        EXPECT_EQ(displayWidth(text), width) << text;
    }
}
