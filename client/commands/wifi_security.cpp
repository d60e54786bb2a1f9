#include "client/commands/wifi_security.h"

#include <algorithm>

namespace client {

static constexpr NamedWifiSecurity kSecurities[] = {
    {"none",           {0, 0}},
    {"wep",            {0, 1}},
    {"wep-shared",     {1, 1}},
    {"wpa-tkip",       {3, 2}},
    {"wpa-aes",        {3, 3}},
    {"wpa-mixed",      {3, 4}},
    {"wpa-wpa2-tkip",  {5, 2}},
    {"wpa-wpa2-aes",   {5, 3}},
    {"wpa-wpa2-mixed", {5, 4}},
    {"wpa2-tkip",      {4, 2}},
    {"wpa2-mixed",     {4, 4}},
    {"wpa2-aes",       {4, 3}},
};

std::span<const NamedWifiSecurity> wifiSecurities() { return kSecurities; }

std::string nameOf(WifiSecurity security) {
    const auto* row = std::ranges::find(kSecurities, security, &NamedWifiSecurity::codes);
    if (row != std::end(kSecurities)) return row->name;
    return "authentication " + std::to_string(security.authentication) + ", encryption " +
           std::to_string(security.encryption);
}

std::optional<WifiSecurity> parseWifiSecurity(std::string_view name) {
    const auto* row = std::ranges::find(kSecurities, name, &NamedWifiSecurity::name);
    if (row == std::end(kSecurities)) return std::nullopt;
    return row->codes;
}

}  // namespace client
