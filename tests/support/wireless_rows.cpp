#include "support/wireless_rows.h"

#include <algorithm>

namespace unit {

static std::string repeated(std::size_t count, const char* text) {
    std::string whole;
    while (whole.size() < count) whole += text;
    return whole.substr(0, count);
}

const std::vector<WepKeyRow>& wepKeyRows() {
    static const std::vector<WepKeyRow> rows{
        {0, 0, "", false},
        {0, 0, "abcd", false},
        {0, 0, "abcde", true},
        {0, 0, "abcdef", false},
        {0, 0, "abcdefghijklm", false},
        {0, 0, "0123456789", false},
        {0, 0, " !~\x7F ", true},
        {0, 0, "abc\x1Fz", false},
        {0, 0, "abcd\x80", false},
        {0, 0, "\xC3\xA9xyz", false},
        {0, 1, "abcdefghijkl", false},
        {0, 1, "abcdefghijklm", true},
        {0, 1, "abcdefghijklmn", false},
        {0, 1, "abcde", false},
        {0, 1, "abcdefghijkl\t", false},
        {0, 1, "abcdefghijkl\xFF", false},
        {1, 0, "012345678", false},
        {1, 0, "0123456789", true},
        {1, 0, "01234567890", false},
        {1, 0, "abcdefABCD", true},
        {1, 0, "EF00000000", true},
        {1, 0, "012345678g", false},
        {1, 0, "012345678G", false},
        {1, 0, "/123456789", false},
        {1, 0, ":123456789", false},
        {1, 0, "@123456789", false},
        {1, 0, "`123456789", false},
        {1, 0, "0x12345678", false},
        {1, 0, "01234 6789", false},
        {1, 0, "abcde", false},
        {1, 0, repeated(26, "01"), false},
        {1, 1, repeated(25, "aF0"), false},
        {1, 1, repeated(26, "aF0"), true},
        {1, 1, repeated(27, "aF0"), false},
        {1, 1, "0123456789", false},
        {1, 1, repeated(25, "0") + "g", false},
        {1, 1, repeated(26, "0") + repeated(6, "f"), false},   // a field full
        {1, 1, repeated(26, "0") + repeated(70, "f"), false},  // past it
    };
    return rows;
}

const std::vector<PreSharedKeyRow>& preSharedKeyRows() {
    static const std::vector<PreSharedKeyRow> rows{
        {"", false},
        {"a", false},
        {"1234567", false},
        {"12345678", true},
        {"123456789", true},
        {" \x7F~ not hexadecimal", true},
        {"1234567\x1F", false},
        {"1234567\x80", false},
        {"12345678\n", false},
        {"na\xC3\xAFve key", false},
        {repeated(62, "x "), true},
        {repeated(63, "x "), true},
        {repeated(62, "x ") + "\xFF", false},
        {repeated(64, "0123456789abcdefABCDEF"), true},
        {repeated(63, "0") + "g", false},
        {std::string("x") + repeated(63, "0"), false},
        {repeated(64, "x "), false},
        {repeated(65, "0"), false},
        {repeated(67, "0"), false},
        {repeated(68, "0"), false},
        {repeated(200, "0"), false},
        {repeated(600, "0"), false},
    };
    return rows;
}

// Words 0, 2 and 5000.
static Packet changeAccepted(const CommandRow& row) {
    return reply(row).put(22, {0, 0, 0, 0, 2, 0, 0, 0, 0x88, 0x13, 0, 0});
}

static Packet changeRefused(const CommandRow& row, std::uint8_t code) {
    return reply(row).put(16, {2}).put(22, {code});
}

testing::AssertionResult changes(const CommandRow& row, int code, const Packet& packet) {
    fake::clearEvents();
    clearFlags();
    const Outcome outcome = call(row.handler, packet.bytes());
    const bool good = code == 0;
    if (raisedFlags() != (good ? std::vector<std::string>{"g_nWifiReset=1"} : std::vector<std::string>{})) {
        return testing::AssertionFailure() << "wrong flags";
    }
    if (!good && !fake::writes().empty()) return testing::AssertionFailure() << "something is written";
    if (const testing::AssertionResult traced = traces(row, 1, outcome); !traced) return traced;
    return replies(good ? changeAccepted(row) : changeRefused(row, static_cast<std::uint8_t>(code)), outcome);
}

void seedWireless() {
    fake::setFlag("WIRELESS", "Enable", 1);
    fake::setNumber("WIRELESS", "Mode", 1);
    fake::setText("WIRELESS", "SSID", "old network");
    fake::setNumber("WIRELESS", "Channel", 11);
    fake::setNumber("WIRELESS", "Authentication", 4);
    fake::setNumber("WIRELESS", "Encryption", 3);
    fake::setNumber("WIRELESS", "WEPKeyFormat", 1);
    fake::setNumber("WIRELESS", "WEPKeyLength", 1);
    fake::setNumber("WIRELESS", "WEPActiveKey", 3);
    fake::setText("WIRELESS", "WEPKey0", "key zero");
    fake::setText("WIRELESS", "WEPKey1", "key one");
    fake::setText("WIRELESS", "WEPKey2", "key two");
    fake::setText("WIRELESS", "WEPKey3", "key three");
    fake::setText("WIRELESS", "PreSharedKey", "old secret");
    fake::setNumber("WIRELESS_REP", "Mode", 0);
}

fake::Events mirrorEvents() {
    const auto shownText = [](const char* key) { return fake::quoted(fake::text("WIRELESS", key).value_or("")); };
    const auto shownNumber = [](const char* key) {
        return "number " + std::to_string(fake::number("WIRELESS", key).value_or(0));
    };
    fake::Events wanted{"cfgRead WIRELESS_REP SameWithClient"};
    const auto mirrored = [&wanted](const std::string& key, const std::string& value) {
        wanted.push_back("cfgRead WIRELESS " + key);
        wanted.push_back("cfgWrite WIRELESS_REP " + key + " " + value + " 1");
    };
    mirrored("SSID", shownText("SSID"));
    for (const char* key :
         {"Channel", "Authentication", "Encryption", "WEPKeyFormat", "WEPKeyLength", "WEPActiveKey"}) {
        mirrored(key, shownNumber(key));
    }
    for (const char* key : {"WEPKey0", "WEPKey1", "WEPKey2", "WEPKey3", "PreSharedKey"}) mirrored(key, shownText(key));
    return wanted;
}

fake::Events workEvents() {
    fake::Events events = fake::eventsOf({"cfgRead", "cfgWrite"});
    const fake::Events credentials{"cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1"};
    if (events.size() < 2 || !std::equal(credentials.begin(), credentials.end(), events.begin())) {
        ADD_FAILURE() << "credentials were not read first";
        return events;
    }
    events.erase(events.begin(), events.begin() + 2);
    return events;
}

}  // namespace unit
