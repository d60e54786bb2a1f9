#include "wireless/iw_scan.h"

#include <stdio.h>
#include <string.h>

#include "wireless/iw_network.h"

// A line of the scan never needs more; what is behind is lost.
static constexpr size_t kMostLine = 512;

struct Column {
    size_t position, width;
    const char* heading;
};

enum ColumnIndex { kChannel, kSsid, kBssid, kSecurity, kSignal, kMode, kType };

static constexpr Column kColumns[] = {
    {0,  4,  "Ch"       },
    {4,  33, "SSID"     },
    {37, 20, "BSSID"    },
    {57, 23, "Security" },
    {80, 10, "Signal(%)"},
    {90, 8,  "W-Mode"   },
    {98, 2,  "NT"       },
};
static constexpr size_t kLine = 101;  // with its newline

struct List {
    char* text;
    size_t size, used;
};

static void put(char* line, ColumnIndex column, const char* text, size_t length) {
    const Column& place = kColumns[column];
    memcpy(line + place.position, text, length < place.width ? length : place.width);
}

static void put(char* line, ColumnIndex column, const char* text) { put(line, column, text, strlen(text)); }

// Null when no further line and the NUL fit.
static char* newLine(List& list) {
    if (list.size - list.used <= kLine) return nullptr;
    char* line = list.text + list.used;
    list.used += kLine;
    memset(line, ' ', kLine - 1);
    line[kLine - 1] = '\n';
    line[kLine] = '\0';
    return line;
}

static int channelOf(int megahertz) {
    if (megahertz == 2484) return 14;
    if (megahertz < 2484) return megahertz >= 2412 ? (megahertz - 2407) / 5 : 0;
    if (megahertz < 4910) return 0;
    if (megahertz <= 4980) return (megahertz - 4000) / 5;
    if (megahertz < 5935) return megahertz > 5000 ? (megahertz - 5000) / 5 : 0;
    if (megahertz == 5935) return 2;
    return megahertz > 5950 && megahertz <= 7125 ? (megahertz - 5950) / 5 : 0;
}

static const char* keyWord(const Network& network) {
    const Security& rsn = network.rsn;
    const Security& wpa = network.wpa;
    if (!rsn.present && !wpa.present) return network.privacy ? "WEP" : "NONE";
    if (rsn.psk && wpa.psk) return "WPA1PSKWPA2PSK";
    if (rsn.psk) return "WPA2PSK";
    if (wpa.psk) return "WPAPSK";
    if (rsn.sae) return "WPA3SAE";
    if (rsn.owe) return "OWE";
    return rsn.enterprise || wpa.enterprise ? "WPAEAP" : "OTHER";
}

static void putSecurity(char* line, const Network& network) {
    bool tkip = network.rsn.tkip || network.wpa.tkip;
    bool aes = network.rsn.aes || network.wpa.aes;
    char text[32];
    snprintf(text, sizeof text, "%s%s%s%s", keyWord(network), tkip || aes ? "/" : "", tkip ? "TKIP" : "",
             aes ? "AES" : "");
    put(line, kSecurity, text);
}

static const char* modeOf(const Network& network) {
    if (network.he) return "11ax";
    if (network.vht) return "11ac";
    if (network.ht) return "11n";
    return network.megahertz < 4000 ? "11b/g" : "11a";
}

static void putNumber(char* line, ColumnIndex column, int number) {
    char text[16];
    snprintf(text, sizeof text, "%d", number);
    put(line, column, text);
}

static bool writeNetwork(const Network& network, List& list) {
    char* line = newLine(list);
    if (line == nullptr) return false;
    putNumber(line, kChannel, channelOf(network.megahertz));
    put(line, kSsid, network.ssid, network.ssidLength);
    put(line, kBssid, network.bssid);
    putSecurity(line, network);
    putNumber(line, kSignal, network.quality);
    put(line, kMode, modeOf(network));
    put(line, kType, network.adHoc ? "Ad" : "In");
    return true;
}

static bool writeHeading(List& list) {
    char* line = newLine(list);
    if (line == nullptr) return false;
    for (const Column& column : kColumns) memcpy(line + column.position, column.heading, strlen(column.heading));
    return true;
}

// Cuts the line out of the scan and ends it with a NUL; returns what is behind it.
static const char* takeLine(const char* scan, const char* end, char line[kMostLine]) {
    const void* newline = memchr(scan, '\n', static_cast<size_t>(end - scan));
    const char* stop = newline != nullptr ? static_cast<const char*>(newline) : end;
    size_t length = static_cast<size_t>(stop - scan);
    if (length >= kMostLine) length = kMostLine - 1;
    memcpy(line, scan, length);
    line[length] = '\0';
    return newline != nullptr ? stop + 1 : end;
}

int siteListFromScan(const char* scan, size_t length, char* list, size_t size) {
    List written = {list, size, 0};
    if (!writeHeading(written)) return -1;
    const char* end = scan + length;
    char line[kMostLine];
    Network network = {};
    int started = 0;
    int networks = 0;
    while (scan < end) {
        scan = takeLine(scan, end, line);
        Network next;
        if (!startNetwork(line, next)) {
            readNetworkLine(line, network);
            continue;
        }
        if (started++ > 0) networks += writeNetwork(network, written);
        network = next;
    }
    if (started > 0) networks += writeNetwork(network, written);
    return networks;
}
