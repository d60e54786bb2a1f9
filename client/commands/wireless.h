// The wireless settings in full.
#pragma once

#include <array>
#include <string>

#include "client/commands/wifi_security.h"
#include "client/login.h"

namespace client {

struct WifiSettings {
    bool enable;
    uint8_t channel;
    std::string ssid;
    uint8_t mode;  // 0 infrastructure, 1 ad hoc
    WifiSecurity security;
    uint8_t wepKeyLength;  // 0: 64 bit, 1: 128 bit
    uint8_t wepKeyFormat;  // 0 printable, 1 hexadecimal
    uint8_t activeWepKey;  // 0-3
    std::array<Secret, 4> wepKeys;
    Secret preSharedKey;
};

constexpr size_t kLongestSsid = 35;

WifiSettings decodeWifi(std::span<const uint8_t> reply);

// A camera takes only enabled settings; of the keys, those fit their fields that `checkWifiKey` takes.
std::vector<uint8_t> encodeWifi(const Login& login, const WifiSettings& settings);

// What is wrong with a key for that kind of network, in words that do not hold the key; "" when nothing is.
std::string checkPreSharedKey(const Secret& key);
std::string checkWepKey(const Secret& key);

// The kind of a WEP key that `checkWepKey` takes.
struct WepKeyKind {
    uint8_t length, format;
};
WepKeyKind kindOfWepKey(const Secret& key);

}  // namespace client
