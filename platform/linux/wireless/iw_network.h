// One wireless network as `iw dev INTERFACE scan` tells it.
#pragma once

#include <stddef.h>

constexpr size_t kMostSsid = 32;

// What one security element (RSN, or the older WPA) of a network offers.
struct Security {
    bool present, psk, sae, owe, enterprise;
    bool groupTkip, groupAes, tkip, aes;
};

enum class Element { Other, Rsn, Wpa };

struct Network {
    int megahertz;
    char ssid[kMostSsid];  // without NUL bytes and newlines
    size_t ssidLength;
    char bssid[18];
    int quality;  // 0 to 100
    bool privacy, adHoc;
    Security rsn, wpa;
    bool ht, vht, he;
    Element element;  // the one whose lines are being read
};

// Makes `network` a new one when the line is the first of a network: "BSS 00:11:22:33:44:55(on wlan0)".
bool startNetwork(const char* line, Network& network);

// Takes what a further line tells about the network.
void readNetworkLine(const char* line, Network& network);
