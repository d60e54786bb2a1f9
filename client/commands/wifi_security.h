// How a wireless network is protected: the wire's two codes, and the one name that users know them by.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace client {

struct WifiSecurity {
    uint8_t authentication;  // 0 open, 1 shared key, 3 WPA, 4 WPA2, 5 either, all with a pre-shared key
    uint8_t encryption;      // 0 none, 1 WEP, 2 TKIP, 3 AES, 4 both

    bool operator==(const WifiSecurity&) const = default;
};

struct NamedWifiSecurity {
    const char* name;
    WifiSecurity codes;
};

// Every one that can be named, from the weakest to the strongest.
std::span<const NamedWifiSecurity> wifiSecurities();

std::string nameOf(WifiSecurity security);  // "authentication 2, encryption 7" for one without a name
std::optional<WifiSecurity> parseWifiSecurity(std::string_view name);

inline bool usesWep(WifiSecurity security) { return security.encryption == 1; }
inline bool usesPreSharedKey(WifiSecurity security) { return security.encryption >= 2 && security.encryption <= 4; }

}  // namespace client
