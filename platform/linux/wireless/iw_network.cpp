#include "wireless/iw_network.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "common/numbers.h"

// "02:00:5e:00:53:01", and anything behind it.
static bool takeBssid(const char* text, char (&bssid)[18]) {
    for (size_t i = 0; i < sizeof bssid - 1; i++) {
        const bool isFitting = i % 3 == 2 ? text[i] == ':' : hexDigit(text[i]) >= 0;
        if (!isFitting) return false;
        bssid[i] = static_cast<char>(text[i] | 0x20);  // in lower case
    }
    bssid[sizeof bssid - 1] = '\0';
    return true;
}

bool startNetwork(const char* line, Network& network) {
    static constexpr char kStart[] = "BSS ";
    char bssid[18];
    if (strncmp(line, kStart, sizeof kStart - 1) != 0 || !takeBssid(line + sizeof kStart - 1, bssid)) return false;
    network = {};
    memcpy(network.bssid, bssid, sizeof bssid);
    return true;
}

static int clamp(long number, int lowest, int highest) {
    if (number < lowest) return lowest;
    return number > highest ? highest : static_cast<int>(number);
}

static void readFrequency(const char* value, Network& network) {
    network.megahertz = clamp(strtol(value, nullptr, 10), 0, 100'000);
}

static void readCapability(const char* value, Network& network) {
    network.privacy = strstr(value, "Privacy") != nullptr;
    network.adHoc = strstr(value, "IBSS") != nullptr;
}

// "-45.00 dBm", or "60/100" from drivers that do not measure: -100 dBm is nothing, -50 dBm as good as it gets.
static void readSignal(const char* value, Network& network) {
    long number = strtol(value, nullptr, 10);
    bool measured = strstr(value, "dBm") != nullptr;
    network.quality = measured ? 2 * (clamp(number, -100, -50) + 100) : clamp(number, 0, 100);
}

// The letter of an SSID at `text`, which is one byte, "\\" or "\xHH". Returns where the next one stands.
static const char* readLetter(const char* text, char& letter) {
    letter = text[0];
    if (text[0] != '\\') return text + 1;
    if (text[1] == '\\') return text + 2;
    int high = text[1] == 'x' ? hexDigit(text[2]) : -1;
    int low = high >= 0 ? hexDigit(text[3]) : -1;
    if (low < 0) return text + 1;
    letter = static_cast<char>(high << 4 | low);
    return text + 4;
}

// A hidden network's name is empty or all NUL bytes. A beacon and a probe response can both tell a name: the first that
// tells one counts.
static void readSsid(const char* value, Network& network) {
    if (network.ssidLength > 0) return;
    bool hidden = true;
    while (*value != '\0' && network.ssidLength < kMostSsid) {
        char letter;
        value = readLetter(value, letter);
        hidden = hidden && letter == '\0';
        network.ssid[network.ssidLength++] = letter == '\0' || letter == '\n' ? '?' : letter;
    }
    if (hidden) network.ssidLength = 0;
}

static void readRsn(const char*, Network& network) {
    network.rsn.present = true;
    network.element = Element::Rsn;
}

static void readWpa(const char*, Network& network) {
    network.wpa.present = true;
    network.element = Element::Wpa;
}

static void readHt(const char*, Network& network) { network.ht = true; }

static void readVht(const char*, Network& network) { network.vht = true; }

static void readHe(const char*, Network& network) { network.he = true; }

static bool offersAes(const char* ciphers) {
    return strstr(ciphers, "CCMP") != nullptr || strstr(ciphers, "GCMP") != nullptr;
}

static void readGroupCipher(const char* value, Security& security) {
    security.groupTkip = strstr(value, "TKIP") != nullptr;
    security.groupAes = offersAes(value);
}

static void readPairwiseCiphers(const char* value, Security& security) {
    bool asGroup = strstr(value, "Use group") != nullptr;
    security.tkip = asGroup ? security.groupTkip : strstr(value, "TKIP") != nullptr;
    security.aes = asGroup ? security.groupAes : offersAes(value);
}

static void readSuites(const char* value, Security& security) {
    security.psk = strstr(value, "PSK") != nullptr;
    security.sae = strstr(value, "SAE") != nullptr;
    security.owe = strstr(value, "OWE") != nullptr;
    security.enterprise = strstr(value, "802.1X") != nullptr;
}

template <typename Target>
struct Field {
    const char* name;
    void (*read)(const char* value, Target& target);
};

// Lines one tab in: "\tfreq: 2412".
static constexpr Field<Network> kNetworkFields[] = {
    {"freq:",             readFrequency },
    {"capability:",       readCapability},
    {"signal:",           readSignal    },
    {"SSID:",             readSsid      },
    {"RSN:",              readRsn       },
    {"WPA:",              readWpa       },
    {"HT capabilities:",  readHt        },
    {"VHT capabilities:", readVht       },
    {"HE capabilities:",  readHe        },
};

// Inside a security element: "\t\t * Pairwise ciphers: CCMP".
static constexpr Field<Security> kSecurityFields[] = {
    {"* Group cipher:",          readGroupCipher    },
    {"* Pairwise ciphers:",      readPairwiseCiphers},
    {"* Authentication suites:", readSuites         },
};

// The value behind the name of a field, null when the line is not that field.
static const char* valueOf(const char* line, const char* name) {
    size_t length = strlen(name);
    if (strncmp(line, name, length) != 0) return nullptr;
    line += length;
    return *line == ' ' ? line + 1 : line;
}

template <typename Target, size_t Count>
static void readField(const Field<Target> (&fields)[Count], const char* line, Target& target) {
    for (const Field<Target>& field : fields) {
        const char* value = valueOf(line, field.name);
        if (value != nullptr) return field.read(value, target);
    }
}

// The first field of an element can stand on the element's own line: "\tRSN:\t * Version: 1".
void readNetworkLine(const char* line, Network& network) {
    if (line[0] != '\t') return;
    if (line[1] != '\t') {
        network.element = Element::Other;
        readField(kNetworkFields, line + 1, network);
    }
    const char* bullet = strchr(line, '*');
    if (bullet == nullptr || network.element == Element::Other) return;
    readField(kSecurityFields, bullet, network.element == Element::Rsn ? network.rsn : network.wpa);
}
