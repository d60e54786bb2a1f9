#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform.h"

using std::string_literals::operator""s;

// What Base64dec gives, with everything behind its NUL untouched.
static std::string decoded(const std::string& text) {
    char out[300];
    memset(out, 0x5A, sizeof out);
    const int length = Base64dec(text.c_str(), out);
    EXPECT_GE(length, 0);
    EXPECT_LE(length, 255);
    const size_t end = static_cast<size_t>(length);
    EXPECT_EQ(out[end], '\0');
    EXPECT_EQ(std::string(out + end + 1, sizeof out - end - 1), std::string(sizeof out - end - 1, 0x5A));
    return {out, end};
}

TEST(Base64, DecodesUpToTheFirstByteOutsideTheAlphabet) {
    const struct {
        std::string text, bytes;
    } rows[] = {
        {"", ""},
        {"YWRtaW4=", "admin"},
        {"YWRtaW4", "admin"},
        {"YQ==", "a"},
        {"YQ=", "a"},
        {"YQ", "a"},
        {"YWI=", "ab"},
        {"YWI", "ab"},
        {"YWJj", "abc"},
        {"Y", ""},
        {"=", ""},
        {"====", ""},
        {"YWJjY", "abc"},
        {"YQ==YWJj", "a"},
        {"YWJj ZGVm", "abc"},
        {"YWJj\nZGVm", "abc"},
        {"YWJj\0ZGVm"s, "abc"},
        {"YWJ!jZGVm", "ab"},
        {" YWJj", ""},
        {"-_-_", ""},
        {"\xFF\x80", ""},
        {"YWJj\xC3\xA4", "abc"},
        {"+/+/", "\xFB\xFF\xBF"},
        {"AAAA", "\0\0\0"s},
        {"AGEA", "\0a\0"s},
        {"/////w==", "\xFF\xFF\xFF\xFF"},
        {"YR==", "a"},  // left-over bits do not matter
    };
    for (const auto& row : rows) EXPECT_EQ(decoded(row.text), row.bytes) << row.text;
}

static std::string encoded(const std::string& bytes) {
    static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bits, text;
    for (const char byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) bits += (static_cast<unsigned char>(byte) >> bit & 1) != 0 ? '1' : '0';
    }
    while (bits.size() % 6 != 0) bits += '0';
    for (size_t at = 0; at < bits.size(); at += 6) text += kAlphabet[std::stoul(bits.substr(at, 6), nullptr, 2)];
    return text;
}

TEST(Base64, GivesEveryByteBack) {
    std::string all;
    for (int byte = 1; byte < 256; byte++) all += static_cast<char>(byte);
    EXPECT_EQ(decoded(encoded(all)), all);
    for (int byte = 0; byte < 256; byte++) {
        for (size_t length = 1; length < 5; length++) {
            const std::string bytes(length, static_cast<char>(byte));
            EXPECT_EQ(decoded(encoded(bytes)), bytes);
        }
    }
}

TEST(Base64, StopsAt255Bytes) {
    const std::string long_text = encoded(std::string(255, 'x') + "yz" + std::string(1000, 'x'));
    EXPECT_EQ(decoded(long_text), std::string(255, 'x'));
    EXPECT_EQ(decoded(encoded(std::string(255, 'x'))), std::string(255, 'x'));
    EXPECT_EQ(decoded(encoded(std::string(254, 'x'))), std::string(254, 'x'));
}

// Every other byte ends the text.
TEST(Base64, KnowsItsAlphabetOnly) {
    int inside = 0;
    for (int byte = 1; byte < 256; byte++) inside += decoded("YQ"s + static_cast<char>(byte) + "YWJj").size() > 1;
    EXPECT_EQ(inside, 64);
}

TEST(Base64, RefusesNull) {
    char out[256] = "before";
    EXPECT_EQ(Base64dec(nullptr, out), -1);
    EXPECT_STREQ(out, "before");
    EXPECT_EQ(Base64dec("YQ==", nullptr), -1);
}
