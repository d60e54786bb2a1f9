// Every key with its type, and every value that a key can take.
#include <algorithm>
#include <climits>
#include <cstring>
#include <random>

#include "store/store_fixture.h"
#include "support/file_calls.h"

enum Kind { Text, Number, Version, Flag };

struct KeyRow {
    const char *section, *key;
    Kind kind;
};

// In no special order.
static const KeyRow kKeys[] = {
    {"INFO", "BrandName", Text},
    {"INFO", "Product", Text},
    {"INFO", "HWVersion", Text},
    {"INFO", "Build", Number},
    {"System", "ModelName", Text},
    {"System", "MainVersion", Version},
    {"System", "FirmwareVersion", Version},
    {"CAMSYSTEM", "CameraName", Text},
    {"HTTP", "Port", Number},
    {"NETWORK_V4", "BootProto", Number},
    {"NETWORK_V4", "IP", Text},
    {"NETWORK_V4", "SubnetMask", Text},
    {"NETWORK_V4", "Gateway", Text},
    {"NETWORK_V4", "DNS0", Text},
    {"NETWORK_V4", "DNS1", Text},
    {"NETWORK_V4", "PPPoEUID", Text},
    {"NETWORK_V4", "PPPoEEnable", Flag},
    {"UPnP", "Enable", Flag},
    {"DDNS", "Enable", Flag},
    {"DDNS", "PROVIDER", Number},
    {"DDNS", "UID", Text},
    {"DDNS", "PWD", Text},
    {"DDNS", "HOST", Text},
    {"DATETIME", "TimeZone", Number},
    {"DATETIME", "DayLightSaving", Flag},
    {"DATETIME", "Protocol", Number},
    {"DATETIME", "NTPServerIP", Text},
    {"DATETIME", "DstAuto", Flag},
    {"DATETIME", "Offset", Text},
    {"DATETIME", "Starttime", Text},
    {"DATETIME", "Stoptime", Text},
    {"USER_ADMIN", "Username1", Text},
    {"USER_ADMIN", "Password1", Text},
    {"HWMIB", "Region", Number},
    {"WIRELESS", "Enable", Flag},
    {"WIRELESS", "Channel", Number},
    {"WIRELESS", "SSID", Text},
    {"WIRELESS", "Mode", Number},
    {"WIRELESS", "Authentication", Number},
    {"WIRELESS", "Encryption", Number},
    {"WIRELESS", "WEPKeyFormat", Number},
    {"WIRELESS", "WEPKeyLength", Number},
    {"WIRELESS", "WEPActiveKey", Number},
    {"WIRELESS", "WEPKey0", Text},
    {"WIRELESS", "WEPKey1", Text},
    {"WIRELESS", "WEPKey2", Text},
    {"WIRELESS", "WEPKey3", Text},
    {"WIRELESS", "PreSharedKey", Text},
    {"WIRELESS_REP", "SameWithClient", Flag},
    {"WIRELESS_REP", "SSID", Text},
    {"WIRELESS_REP", "Channel", Number},
    {"WIRELESS_REP", "Authentication", Number},
    {"WIRELESS_REP", "Encryption", Number},
    {"WIRELESS_REP", "WEPKeyFormat", Number},
    {"WIRELESS_REP", "WEPKeyLength", Number},
    {"WIRELESS_REP", "WEPActiveKey", Number},
    {"WIRELESS_REP", "WEPKey0", Text},
    {"WIRELESS_REP", "WEPKey1", Text},
    {"WIRELESS_REP", "WEPKey2", Text},
    {"WIRELESS_REP", "WEPKey3", Text},
    {"WIRELESS_REP", "PreSharedKey", Text},
    {"WIRELESS_REP", "Mode", Number},
    {"WIRELESS_REP", "Enable", Flag},
};

// The bytes that cfgRead wrote into a target of 8 bytes, 0x77 each.
static std::string bytesRead(const KeyRow& row) {
    char target[8];
    memset(target, 0x77, sizeof target);
    requestBegins();
    EXPECT_EQ(cfgRead(row.section, row.key, target), 0) << row.section << "/" << row.key;
    return {target, sizeof target};
}

TEST_F(StoreTest, KnowsEveryKeyAndItsType) {
    for (const KeyRow& row : kKeys) {
        put("[" + std::string(row.section) + "]\n" + row.key + "=1\n");
        std::string expected(8, 0x77);
        const uint8_t byte = 1;
        const uint16_t half = 1;
        const int32_t word = 1;
        if (row.kind == Text) expected.replace(0, 2, std::string("1\0", 2));
        if (row.kind == Flag) memcpy(expected.data(), &byte, sizeof byte);
        if (row.kind == Version) memcpy(expected.data(), &half, sizeof half);
        if (row.kind == Number) memcpy(expected.data(), &word, sizeof word);
        EXPECT_EQ(bytesRead(row), expected) << row.section << "/" << row.key;
    }
}

TEST_F(StoreTest, WritesEveryKeyByItsType) {
    CaughtFileCalls caught({.noSync = true});
    for (const KeyRow& row : kKeys) {
        put("");
        char value[8];
        memset(value, 0x77, sizeof value);
        if (row.kind == Text) strcpy(value, "word");
        ASSERT_EQ(cfgWrite(row.section, row.key, value, 1), 0) << row.section << "/" << row.key;
        const char* const texts[] = {"word", "2004318071", "30583", "119"};
        EXPECT_EQ(bytes(), "[" + std::string(row.section) + "]\n" + row.key + "=" + texts[row.kind] + "\n");
    }
}

TEST_F(StoreTest, ReadsNumbersIntoOddAddresses) {
    put("[HTTP]\nPort=-2\n[System]\nMainVersion=513\n");
    char room[8] = {};
    int32_t number;
    EXPECT_EQ(cfgRead("HTTP", "Port", room + 1), 0);
    memcpy(&number, room + 1, 4);
    EXPECT_EQ(number, -2);
    uint16_t version;
    EXPECT_EQ(cfgRead("System", "MainVersion", room + 3), 0);
    memcpy(&version, room + 3, 2);
    EXPECT_EQ(version, 513);
}

struct NumberRow {
    const char* text;
    std::optional<int32_t> number;
    std::optional<uint16_t> version;
    std::optional<uint8_t> flag;
};

void PrintTo(const NumberRow& row, std::ostream* out) { *out << '"' << row.text << '"'; }

class StoreNumbers : public StoreTest, public testing::WithParamInterface<NumberRow> {};

TEST_P(StoreNumbers, AreWholeAndInRange) {
    const std::string text = GetParam().text;
    put("[HTTP]\nPort=" + text + "\n[System]\nMainVersion=" + text + "\n[UPnP]\nEnable=" + text + "\n");
    EXPECT_EQ(storedNumber<int32_t>("HTTP", "Port"), GetParam().number) << text;
    EXPECT_EQ(storedNumber<uint16_t>("System", "MainVersion"), GetParam().version) << text;
    EXPECT_EQ(storedNumber<uint8_t>("UPnP", "Enable"), GetParam().flag) << text;
}

static const std::string kZeros255 = std::string(254, '0') + "7";
static const std::string kZeros256 = std::string(255, '0') + "7";

static const NumberRow kNumberRows[] = {
    {"0", 0, 0, 0},
    {"-0", 0, 0, 0},
    {"7", 7, 7, 7},
    {"007", 7, 7, 7},
    {" 7 ", 7, 7, 7},
    {"\"7\"", 7, 7, 7},
    {"255", 255, 255, 255},
    {"256", 256, 256, {}},
    {"-1", -1, {}, {}},
    {"65535", 65535, 65535, {}},
    {"65536", 65536, {}, {}},
    {"2147483647", INT_MAX, {}, {}},
    {"2147483648", {}, {}, {}},
    {"-2147483648", INT_MIN, {}, {}},
    {"-2147483649", {}, {}, {}},
    {"4294967296", {}, {}, {}},
    {"4294967303", {}, {}, {}},
    {"18446744073709551617", {}, {}, {}},
    {"99999999999999999999999999999999", {}, {}, {}},
    {kZeros255.c_str(), 7, 7, 7},
    {kZeros256.c_str(), {}, {}, {}},
    {"", {}, {}, {}},
    {"-", {}, {}, {}},
    {"--1", {}, {}, {}},
    {"+1", {}, {}, {}},
    {"1 2", {}, {}, {}},
    {"1x", {}, {}, {}},
    {"x1", {}, {}, {}},
    {"0x1", {}, {}, {}},
    {"1.0", {}, {}, {}},
    {"1e1", {}, {}, {}},
    {"\" 7\"", {}, {}, {}},
    {"\"7", {}, {}, {}},
    {"yes", {}, {}, {}},
};

INSTANTIATE_TEST_SUITE_P(Format, StoreNumbers, testing::ValuesIn(kNumberRows));

TEST_F(StoreTest, GivesNumbersBackUpToTheirLimits) {
    for (const int32_t number : {0, 1, -1, 80, INT_MAX, INT_MIN}) {
        ASSERT_EQ(cfgWrite("HTTP", "Port", &number, 1), 0);
        EXPECT_EQ(storedNumber<int32_t>("HTTP", "Port"), number);
    }
    for (const uint16_t version : {uint16_t{0}, uint16_t{1}, uint16_t{65535}}) {
        ASSERT_EQ(cfgWrite("System", "MainVersion", &version, 1), 0);
        EXPECT_EQ(storedNumber<uint16_t>("System", "MainVersion"), version);
    }
    for (const uint8_t flag : {uint8_t{0}, uint8_t{1}, uint8_t{255}}) {
        ASSERT_EQ(cfgWrite("UPnP", "Enable", &flag, 1), 0);
        EXPECT_EQ(storedNumber<uint8_t>("UPnP", "Enable"), flag);
    }
    EXPECT_EQ(bytes(), "[HTTP]\nPort=-2147483648\n\n[System]\nMainVersion=65535\n\n[UPnP]\nEnable=255\n");
}

struct QuoteRow {
    std::string text, stored;
};

void PrintTo(const QuoteRow& row, std::ostream* out) { *out << row.stored; }

class StoreQuotes : public StoreTest, public testing::WithParamInterface<QuoteRow> {};

TEST_P(StoreQuotes, OnlyWhatNeedsIt) {
    ASSERT_EQ(writeText("DDNS", "UID", GetParam().text), 0);
    EXPECT_EQ(bytes(), "[DDNS]\nUID=" + GetParam().stored + "\n");
    EXPECT_EQ(storedText("DDNS", "UID"), GetParam().text);
}

static const QuoteRow kQuoteRows[] = {
    {"", ""},
    {"a", "a"},
    {"a b", "a b"},
    {"#;[]='$`~", "#;[]='$`~"},
    {"\x80\xFF", "\x80\xFF"},
    {" a", "\" a\""},
    {"a ", "\"a \""},
    {" ", "\" \""},
    {"a\"b", R"("a\"b")"},
    {"\"", R"("\"")"},
    {"a\\b", R"("a\\b")"},
    {"\\", R"("\\")"},
    {"\n", R"("\n")"},
    {"\r", R"("\r")"},
    {"\t", R"("\t")"},
    {"a\x01", R"("a\x01")"},
    {"\x1F\x7F", R"("\x1F\x7F")"},
    {"x\n[USER_ADMIN]\nPassword1=", R"("x\n[USER_ADMIN]\nPassword1=")"},
};

INSTANTIATE_TEST_SUITE_P(Format, StoreQuotes, testing::ValuesIn(kQuoteRows));

TEST_F(StoreTest, GivesEveryByteBack) {
    CaughtFileCalls caught({.noSync = true});
    for (int byte = 1; byte < 256; byte++) {
        const std::string text(1, static_cast<char>(byte));
        for (const std::string& tried : {text, "a" + text + "b"}) {
            ASSERT_EQ(writeText("WIRELESS", "SSID", tried), 0) << byte;
            ASSERT_EQ(storedText("WIRELESS", "SSID"), tried) << byte;
        }
    }
}

// Any text, among neighbours that must stay what they are.
TEST_F(StoreTest, GivesAnyTextBackByteForByte) {
    CaughtFileCalls caught({.noSync = true});
    std::mt19937 random(20260101);
    std::uniform_int_distribution<int> any_byte(1, 255);
    std::uniform_int_distribution<int> any_awkward(0, 11);
    std::uniform_int_distribution<size_t> any_length(0, 255);
    constexpr char kAwkward[] = " \t\r\n\"\\#;[]=x";
    put("[A]\nBefore=1\n[WIRELESS]\nSSID=\nWEPKey0=zero\n[B]\nAfter=2\n");
    for (int round = 0; round < 300; round++) {
        std::string text(round % 3 == 0 ? 255 : any_length(random), ' ');
        for (char& letter : text) {
            letter = round % 2 == 0 ? static_cast<char>(any_byte(random)) : kAwkward[any_awkward(random)];
        }
        ASSERT_EQ(writeText("WIRELESS", "SSID", text), 0);
        ASSERT_EQ(storedText("WIRELESS", "SSID"), text);
        const std::string file = bytes();
        const std::string head = "[A]\nBefore=1\n[WIRELESS]\nSSID=", tail = "\nWEPKey0=zero\n[B]\nAfter=2\n";
        ASSERT_EQ(file.substr(0, head.size()), head);
        ASSERT_EQ(file.substr(file.size() - tail.size()), tail);
        ASSERT_EQ(std::count(file.begin(), file.end(), '\n'), 7);
    }
}

TEST_F(StoreTest, RefusesATextThatIsTooLong) {
    put("[INFO]\nProduct=old\n");
    EXPECT_EQ(writeText("INFO", "Product", std::string(256, 'a')), -1);
    const std::vector<char> endless(256, 'a');
    EXPECT_EQ(cfgWrite("INFO", "Product", endless.data(), 1), -1);
    EXPECT_EQ(bytes(), "[INFO]\nProduct=old\n");
    EXPECT_EQ(writeText("INFO", "Product", std::string(255, '\x01')), 0);
    EXPECT_EQ(storedText("INFO", "Product"), std::string(255, '\x01'));
}
