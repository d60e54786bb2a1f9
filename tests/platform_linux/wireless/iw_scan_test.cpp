// The list of networks made from what iw prints.
#include "wireless/iw_scan.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using std::string_literals::operator""s;

constexpr size_t kLine = 101;

static const std::string kHeading =
    "Ch  SSID                             BSSID               Security               Signal(%) W-Mode  NT\n";

static std::string padded(const std::string& text, size_t width) {
    return text + std::string(width - text.size(), ' ');
}

static std::string line(const std::string& channel, const std::string& ssid, const std::string& bssid,
                        const std::string& security, const std::string& signal, const std::string& mode,
                        const std::string& type) {
    return padded(channel, 4) + padded(ssid, 33) + padded(bssid, 20) + padded(security, 23) + padded(signal, 10) +
           padded(mode, 8) + type + "\n";
}

static std::string listed(const std::string& scan, int networks, size_t size = 21844) {
    std::string list(size + 1, 'Z');
    EXPECT_EQ(siteListFromScan(scan.data(), scan.size(), list.data(), size), networks);
    EXPECT_EQ(list[size], 'Z');
    return list.substr(0, list.find('\0'));
}

// The lines of one network, as iw indents them.
static std::string network(const std::string& details, const char* capability = "ESS Privacy ShortSlotTime (0x0431)") {
    return "BSS 02:00:5e:00:53:01(on wlan0)\n"
           "\tTSF: 1207131221 usec (0d, 00:20:07)\n"
           "\tfreq: 2437\n"
           "\tbeacon interval: 100 TUs\n"
           "\tcapability: " +
           std::string(capability) +
           "\n"
           "\tsignal: -60.00 dBm\n"
           "\tlast seen: 0 ms ago\n" +
           details;
}

static const std::string kRsn =
    "\tRSN:\t * Version: 1\n"
    "\t\t * Group cipher: TKIP\n"
    "\t\t * Pairwise ciphers: CCMP\n"
    "\t\t * Authentication suites: PSK\n"
    "\t\t * Capabilities: 1-PTKSA-RC 1-GTKSA-RC (0x0000)\n";
static const std::string kWpa =
    "\tWPA:\t * Version: 1\n"
    "\t\t * Group cipher: TKIP\n"
    "\t\t * Pairwise ciphers: TKIP\n"
    "\t\t * Authentication suites: PSK\n";

TEST(IwScan, ListsEveryKindOfNetwork) {
    const std::string scan =
        "BSS 02:00:5e:00:53:0a(on wlan0) -- associated\n"
        "\tlast seen: 2405.468s [boottime]\n"
        "\tTSF: 1207131221 usec (0d, 00:20:07)\n"
        "\tfreq: 2412\n"
        "\tbeacon interval: 100 TUs\n"
        "\tcapability: ESS Privacy ShortPreamble ShortSlotTime (0x0431)\n"
        "\tsignal: -52.00 dBm\n"
        "\tlast seen: 0 ms ago\n"
        "\tInformation elements from Probe Response frame:\n"
        "\tSSID: Home network\n"
        "\tSupported rates: 1.0* 2.0* 5.5* 11.0* 18.0 24.0 36.0 54.0 \n"
        "\tDS Parameter set: channel 1\n"
        "\tRSN:\t * Version: 1\n"
        "\t\t * Group cipher: CCMP\n"
        "\t\t * Pairwise ciphers: CCMP\n"
        "\t\t * Authentication suites: PSK\n"
        "\t\t * Capabilities: 16-PTKSA-RC 1-GTKSA-RC (0x000c)\n"
        "\tHT capabilities:\n"
        "\t\tCapabilities: 0x1ad\n"
        "\tWPS:\t * Version: 1.0\n"
        "\t\t * Manufacturer: x\n"
        "\t\t * Authentication suites: SAE\n"
        "BSS 02:00:5e:00:53:0b(on wlan0)\n"
        "\tfreq: 5180\n"
        "\tcapability: ESS Privacy SpectrumMgmt (0x0111)\n"
        "\tsignal: -71.50 dBm\n"
        "\tSSID: Caf\\xc3\\xa9 \\x20\n"
        "\tRSN:\t * Version: 1\n"
        "\t\t * Group cipher: CCMP\n"
        "\t\t * Pairwise ciphers: CCMP\n"
        "\t\t * Authentication suites: PSK SAE\n"
        "\t\t * Capabilities: MFP-capable (0x008c)\n"
        "\tHT capabilities:\n"
        "\tVHT capabilities:\n"
        "BSS 02:00:5e:00:53:0c(on wlan0)\n"
        "\tfreq: 2484\n"
        "\tcapability: ESS Privacy (0x0011)\n"
        "\tsignal: -30.00 dBm\n"
        "\tSSID: old\n"
        "BSS 02:00:5e:00:53:0d(on wlan0)\n"
        "\tfreq: 2472\n"
        "\tcapability: ESS (0x0001)\n"
        "\tsignal: -99.00 dBm\n"
        "\tSSID: open\n"
        "BSS 02:00:5e:00:53:0e(on wlan0)\n"
        "\tfreq: 5955\n"
        "\tcapability: ESS Privacy (0x0011)\n"
        "\tsignal: 37/100\n"
        "\tSSID: \n"
        "\tRSN:\t * Version: 1\n"
        "\t\t * Group cipher: CCMP\n"
        "\t\t * Pairwise ciphers: CCMP\n"
        "\t\t * Authentication suites: SAE\n"
        "\tHE capabilities:\n"
        "BSS 02:00:5e:00:53:0f(on wlan0)\n"
        "\tfreq: 2422.0\n"
        "\tcapability: IBSS (0x0002)\n"
        "\tsignal: -150.00 dBm\n"
        "\tSSID: two\\x20\\x5chosts\\\\\n";
    const std::string list = kHeading +  //
                             line("1", "Home network", "02:00:5e:00:53:0a", "WPA2PSK/AES", "96", "11n", "In") +
                             line("36", "Caf\xC3\xA9  ", "02:00:5e:00:53:0b", "WPA2PSK/AES", "58", "11ac", "In") +
                             line("14", "old", "02:00:5e:00:53:0c", "WEP", "100", "11b/g", "In") +
                             line("13", "open", "02:00:5e:00:53:0d", "NONE", "2", "11b/g", "In") +
                             line("1", "", "02:00:5e:00:53:0e", "WPA3SAE/AES", "37", "11ax", "In") +
                             line("3", "two \\hosts\\", "02:00:5e:00:53:0f", "NONE", "0", "11b/g", "Ad");
    EXPECT_EQ(listed(scan, 6), list);
}

static std::string column(const std::string& scan, size_t position, size_t width) {
    const std::string text = listed(scan, 1).substr(kLine + position, width);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

static std::string element(const char* name, const char* group, const char* pairwise, const char* suites) {
    return "\t" + std::string(name) + ":\t * Version: 1\n\t\t * Group cipher: " + group +
           "\n\t\t * Pairwise ciphers: " + pairwise + "\n\t\t * Authentication suites: " + suites + "\n";
}

TEST(IwScan, NamesTheSecurity) {
    const struct {
        std::string elements;
        const char* word;
    } rows[] = {
        {kRsn, "WPA2PSK/AES"},
        {kWpa, "WPAPSK/TKIP"},
        {kRsn + kWpa, "WPA1PSKWPA2PSK/TKIPAES"},
        {kWpa + kRsn, "WPA1PSKWPA2PSK/TKIPAES"},
        {element("RSN", "TKIP", "CCMP TKIP", "PSK"), "WPA2PSK/TKIPAES"},
        {element("RSN", "TKIP", "TKIP", "PSK"), "WPA2PSK/TKIP"},
        {element("RSN", "CCMP", "Use group cipher suite", "PSK"), "WPA2PSK/AES"},
        {element("WPA", "TKIP", "Use group cipher suite", "PSK"), "WPAPSK/TKIP"},
        {element("WPA", "CCMP", "CCMP", "PSK"), "WPAPSK/AES"},
        {element("RSN", "CCMP", "CCMP", "FT/PSK"), "WPA2PSK/AES"},
        {element("RSN", "CCMP", "CCMP", "PSK/SHA-256 SAE FT/SAE"), "WPA2PSK/AES"},
        {element("RSN", "GCMP-256", "GCMP-256", "SAE"), "WPA3SAE/AES"},
        {element("RSN", "WEP-40", "WEP-104", "PSK"), "WPA2PSK"},
        {element("RSN", "CCMP", "CCMP", "IEEE 802.1X"), "WPAEAP/AES"},
        {element("WPA", "TKIP", "TKIP", "IEEE 802.1X"), "WPAEAP/TKIP"},
        {element("RSN", "CCMP", "CCMP", "OWE"), "OWE/AES"},
        {element("RSN", "CCMP", "CCMP", "00-0f-ac:99"), "OTHER/AES"},
        {"\tWPS:\t * Version: 1.0\n\t\t * Authentication suites: PSK\n", "WEP"},
        {"\tSSID: RSN:\n", "WEP"},
        {"\tHT capabilities:\n\t\t * RSN:\n", "WEP"},
        {"", "WEP"},
    };
    for (const auto& row : rows) EXPECT_EQ(column(network(row.elements), 57, 23), row.word) << row.elements;
    EXPECT_EQ(column(network("", "ESS (0x0001)"), 57, 23), "NONE");
    EXPECT_EQ(column(network("", "IBSS Privacy (0x0012)"), 98, 2), "Ad");
    EXPECT_EQ(column(network("", "IBSS Privacy (0x0012)"), 57, 23), "WEP");
}

TEST(IwScan, KnowsTheChannels) {
    const struct {
        const char *megahertz, *channel;
    } rows[] = {
        {"2412", "1"},   {"2437", "6"},   {"2462", "11"},  {"2472", "13"},        {"2484", "14"},  {"5180", "36"},
        {"5320", "64"},  {"5500", "100"}, {"5745", "149"}, {"5825", "165"},       {"5885", "177"}, {"4920", "184"},
        {"5935", "2"},   {"5955", "1"},   {"6415", "93"},  {"7115", "233"},       {"2437.5", "6"}, {"0", "0"},
        {"4910", "182"}, {"4909", "0"},   {"4980", "196"}, {"4981", "0"},         {"5000", "0"},   {"5005", "1"},
        {"5950", "0"},   {"7125", "235"}, {"7126", "0"},   {"2411", "0"},         {"2483", "15"},  {"", "0"},
        {"-1", "0"},     {"58320", "0"},  {"900", "0"},    {"999999999999", "0"}, {"x", "0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(column(network("\tfreq: "s + row.megahertz + "\n"), 0, 4), row.channel) << row.megahertz;
    }
}

TEST(IwScan, TurnsTheSignalIntoPercent) {
    const struct {
        const char *signal, *percent;
    } rows[] = {
        {"-100.00 dBm", "0"},
        {"-99.00 dBm", "2"},
        {"-75.00 dBm", "50"},
        {"-51.00 dBm", "98"},
        {"-50.00 dBm", "100"},
        {"-1.00 dBm", "100"},
        {"0.00 dBm", "100"},
        {"5.00 dBm", "100"},
        {"-200 dBm", "0"},
        {"0/100", "0"},
        {"81/100", "81"},
        {"100/100", "100"},
        {"999/100", "100"},
        {"", "0"},
        {"-99999999999999 dBm", "0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(column(network("\tsignal: "s + row.signal + "\n"), 80, 10), row.percent) << row.signal;
    }
}

TEST(IwScan, TakesSsidsApart) {
    const std::string longest(32, 'n'), endless(5000, 'n');
    const struct {
        std::string lines, ssid;
    } rows[] = {
        {"\tSSID: a\n", "a"},
        {"\tSSID: with  two blanks\n", "with  two blanks"},
        {"\tSSID: \\x20lead\n", " lead"},
        {"\tSSID: a\\\\b\n", "a\\b"},
        {"\tSSID: a\\x5Cb\n", "a\\b"},
        {"\tSSID: a\\x5cx41\n", "a\\x41"},
        {"\tSSID: \\xe2\\x82\\xac\n", "\xE2\x82\xAC"},
        {"\tSSID: \xE2\x82\xAC\n", "\xE2\x82\xAC"},
        {"\tSSID: a\\x0ab\\x00c\n", "a?b?c"},
        {"\tSSID: \\x00\\x00\\x00\n", ""},
        {"\tSSID: \n", ""},
        {"\tSSID:\n", ""},
        {"\tSSID: \n\tSSID: told later\n", "told later"},
        {"\tSSID: \\x00\\x00\n\tSSID: told later\n", "told later"},
        {"\tSSID: first\n\tSSID: second\n", "first"},
        {"\t\t * SSID: nested\n", ""},
        {"\tMESH ID: mesh\n", ""},
        {"\tSSID: a\\x4\n", "a\\x4"},
        {"\tSSID: a\\xg0\n", "a\\xg0"},
        {"\tSSID: a\\x f\n", "a\\x f"},
        {"\tSSID: a\\\n", "a\\"},
        {"\tSSID: a\\x", "a\\x"},
        {"\tSSID: a\0b\n"s, "a"},
        {"\tSSID: " + longest + "\n", longest},
        {"\tSSID: " + longest + "more\n", longest},
        {"\tSSID: " + endless + "\n", longest},
    };
    for (const auto& row : rows) EXPECT_EQ(column(network(row.lines), 4, 33), row.ssid) << row.lines;
}

TEST(IwScan, StaysInsideTheList) {
    std::string scan;
    for (int index = 0; index < 300; index++) scan += network("\tSSID: n" + std::to_string(index) + "\n");
    EXPECT_EQ(listed(scan, 215).size(), 216 * kLine);  // 21844 bytes
    EXPECT_EQ(listed(scan, 1, 2 * kLine + 1).size(), 2 * kLine);
    EXPECT_EQ(listed(scan, 0, 2 * kLine), kHeading);
    EXPECT_EQ(listed(scan, 0, kLine + 1), kHeading);
    for (const size_t size : {size_t{0}, size_t{1}, kLine}) {
        std::string list(size + 1, 'Z');
        EXPECT_EQ(siteListFromScan(scan.data(), scan.size(), list.data(), size), -1);
        EXPECT_EQ(list, std::string(size + 1, 'Z'));
    }
}

TEST(IwScan, EndsWhereTheTextEnds) {
    const std::string scan = network("\tSSID: name\n" + kRsn);
    for (size_t length = 0; length <= scan.size(); length++) {
        const std::string text = scan.substr(0, length);
        const std::vector<char> exact(text.begin(), text.end());  // so that a sanitizer sees a read behind it
        char list[1000];
        const int networks = siteListFromScan(exact.data(), exact.size(), list, sizeof list);
        EXPECT_EQ(networks, length >= strlen("BSS 02:00:5e:00:53:01") ? 1 : 0) << length;
    }
}

TEST(IwScan, TakesNothingElseForAnAddress) {
    for (const char* line : {"BSS -1:0:0:0:0:0", "BSS 02:00:5e:00:53:-1", "BSS 02:00:5e:00:53", "BSS 02:00:5e:00:53:0",
                             "BSS 02:00:5e:00:53:0g", "BSS  2:00:5e:00:53:01", "BSS 0x:00:5e:00:53:01", "BSS "}) {
        EXPECT_EQ(listed(std::string(line) + "(on wlan0)\n\tfreq: 2437\n", 0), kHeading) << line;
    }
}

TEST(IwScan, ListsNothingWhereThereIsNothing) {
    for (const std::string& scan : {""s, "\n\n"s, "command failed: Network is down (-100)\n"s, "\tfreq: 2412\n"s,
                                    "BSS Load:\n"s, " BSS 02:00:5e:00:53:01\n"s, std::string(3000, '\0')}) {
        EXPECT_EQ(listed(scan, 0), kHeading) << scan;
    }
}
