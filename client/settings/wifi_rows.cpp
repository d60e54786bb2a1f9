// The wireless network the camera joins.
#include "client/settings/rows.h"

namespace client {

static std::string getEnabled(const CameraState& state) { return onOff(state.wifi->enable); }

static std::string getSsid(const CameraState& state) { return state.wifi->ssid; }

static void setSsid(CameraState& wanted, const std::string& text) {
    checkLength(text, kLongestSsid);
    wanted.wifi->ssid = text;
}

static std::string getMode(const CameraState& state) { return state.wifi->mode == 0 ? "infrastructure" : "ad-hoc"; }

static void setMode(CameraState& wanted, const std::string& text) {
    if (text != "infrastructure" && text != "ad-hoc") throw badValue("must be 'infrastructure' or 'ad-hoc'");
    wanted.wifi->mode = text == "ad-hoc" ? 1 : 0;
}

static std::vector<std::string> modes() { return {"infrastructure", "ad-hoc"}; }

static std::string getChannel(const CameraState& state) { return std::to_string(state.wifi->channel); }

static void setChannel(CameraState& wanted, const std::string& text) {
    wanted.wifi->channel = static_cast<uint8_t>(parseNumber(text, 1, 255));
}

static std::string getSecurity(const CameraState& state) { return nameOf(state.wifi->security); }

static std::vector<std::string> securities() {
    std::vector<std::string> names;
    for (const NamedWifiSecurity& row : wifiSecurities()) names.emplace_back(row.name);
    return names;
}

static void setSecurity(CameraState& wanted, const std::string& text) {
    if (const auto security = parseWifiSecurity(text)) {
        wanted.wifi->security = *security;
        return;
    }
    std::string names;
    for (const std::string& name : securities()) names += (names.empty() ? "" : ", ") + name;
    throw badValue("must be one of " + names);
}

static std::string getWepIndex(const CameraState& state) { return std::to_string(state.wifi->activeWepKey); }

static void setWepIndex(CameraState& wanted, const std::string& text) {
    wanted.wifi->activeWepKey = static_cast<uint8_t>(parseNumber(text, 0, 3));
}

static std::vector<std::string> wepIndexes() { return {"0", "1", "2", "3"}; }

// The key in use: of the four WEP keys the active one.
static const Secret* key(const CameraState& state) {
    const WifiSettings& wifi = *state.wifi;
    return usesWep(wifi.security) ? &wifi.wepKeys[wifi.activeWepKey & 3] : &wifi.preSharedKey;
}

// Set last, when the kind of network it belongs to is known.
static void setKey(CameraState& wanted, const Secret& text) {
    WifiSettings& wifi = *wanted.wifi;
    if (!usesWep(wifi.security) && !usesPreSharedKey(wifi.security)) {
        throw badValue("wifi.security is " + nameOf(wifi.security) + ", which has no key");
    }
    const std::string fault = usesWep(wifi.security) ? checkWepKey(text) : checkPreSharedKey(text);
    if (!fault.empty()) throw badValue(fault);
    if (!usesWep(wifi.security)) {
        wifi.preSharedKey = text;
        return;
    }
    wifi.wepKeys[wifi.activeWepKey & 3] = text;
    wifi.wepKeyLength = kindOfWepKey(text).length;
    wifi.wepKeyFormat = kindOfWepKey(text).format;
}

static constexpr Setting kWifiRows[] = {
    {.key = "wifi.enabled",
     .group = Group::Wifi,
     .summary = "whether its radio is on",
     .values = "on or off",
     .quirk = "cameras tell it but do not let it be set",
     .choices = onOffChoices,
     .get = getEnabled                                                                                               },
    {.key = "wifi.ssid",
     .group = Group::Wifi,
     .summary = "the network it joins",
     .values = "text of at most 35 bytes",
     .quirk = "",
     .get = getSsid,
     .set = setSsid                                                                                                  },
    {.key = "wifi.mode",
     .group = Group::Wifi,
     .summary = "with an access point or among equals",
     .values = "infrastructure or ad-hoc",
     .quirk = "",
     .choices = modes,
     .get = getMode,
     .set = setMode},
    {.key = "wifi.channel",
     .group = Group::Wifi,
     .summary = "the channel of its radio",
     .values = "a channel that is allowed where it stands",
     .quirk = "the camera knows its region, and refuses others",
     .get = getChannel,
     .set = setChannel                                                                                               },
    {.key = "wifi.security",
     .group = Group::Wifi,
     .summary = "how that network is protected",
     .values = "none, wep, wep-shared, or one of wpa, wpa2, wpa-wpa2 with -tkip, -aes or -mixed",
     .quirk = "",
     .choices = securities,
     .get = getSecurity,
     .set = setSecurity},
    {.key = "wifi.wep-index",
     .group = Group::Wifi,
     .summary = "which of the four WEP keys is used",
     .values = "0 to 3",
     .quirk = "",
     .choices = wepIndexes,
     .get = getWepIndex,
     .set = setWepIndex},
    {.key = "wifi.key",
     .group = Group::Wifi,
     .summary = "its key",
     .values = "a secret: 8 to 63 printable characters or 64 hexadecimal digits; for WEP 5 or 13, or 10 or 26 digits",
     .quirk = "",
     .setSecret = setKey,
     .secret = key},
};

std::span<const Setting> wifiRows() { return kWifiRows; }

}  // namespace client
