// The wireless settings in full.
#include "protocol/wifi.h"

#include <string.h>

#include "camera/settings.h"
#include "handlers/commands.h"
#include "handlers/wireless.h"
#include "protocol/result_codes.h"
#include "util/reply_fields.h"
#include "util/wifi_channel.h"

static constexpr uint8_t kCapabilities[10] = {0xFF, 0x00, 0x00, 0x00, 0x03, 0x0F, 0x1B, 0x03, 0x03, 0x0F};

// Two stored numbers in one byte, unmasked: one out of range spills into its neighbour.
static uint8_t nibbles(int32_t low, int32_t high) {
    return static_cast<uint8_t>(static_cast<uint32_t>(low) | static_cast<uint32_t>(high) << 4);
}

static void getWifi(const uint8_t*, uint8_t* reply) {
    WifiBlock& out = view<WifiReply>(reply).block;
    out.enable = read(kWifiEnable);
    out.channel = static_cast<uint8_t>(read(kWifiChannel));
    putEndedText(out.ssid, kWifiSsid);
    int32_t mode = read(kWifiMode);
    int32_t authentication = read(kWifiAuthentication);
    int32_t encryption = read(kWifiEncryption);
    int32_t keyFormat = read(kWifiWepKeyFormat);
    int32_t keyLength = read(kWifiWepKeyLength);
    int32_t activeKey = read(kWifiActiveWepKey);
    out.mode_encryption = nibbles(mode, encryption);
    out.auth_key_length = nibbles(wireAuthentication(authentication), keyLength);
    out.key_format_active = nibbles(keyFormat, activeKey);
    putEndedText(out.wep_key[0], kWifiWepKey0);
    putEndedText(out.wep_key[1], kWifiWepKey1);
    putEndedText(out.wep_key[2], kWifiWepKey2);
    putEndedText(out.wep_key[3], kWifiWepKey3);
    putEndedText(out.pre_shared_key, kWifiPreSharedKey);
    memcpy(out.capabilities, kCapabilities, sizeof out.capabilities);
}

// A request taken apart.
struct WifiChange {
    WifiSettings settings;
    int32_t keyLength, keyFormat, activeKey;
    char key[kTextSize];  // the active WEP key, or the pre-shared key
};

static void parse(const uint8_t* request, WifiChange& change) {
    const WifiBlock& in = view<WifiRequest>(request).block;
    change.settings.channel = in.channel;
    takeLongText(change.settings.ssid, request, in.ssid);
    change.settings.mode = in.mode_encryption & 0x0F;
    change.settings.encryption = in.mode_encryption >> 4;
    change.settings.authentication = storedAuthentication(in.auth_key_length & 0x0F);
    change.keyLength = in.auth_key_length >> 4;
    change.keyFormat = in.key_format_active & 0x0F;
    change.activeKey = in.key_format_active >> 4;
}

static uint32_t checkKey(const uint8_t* request, WifiChange& change) {
    const WifiBlock& in = view<WifiRequest>(request).block;
    if (change.settings.encryption == kEncryptionWep) {
        takeLongText(change.key, request, in.wep_key[change.activeKey]);
        return isWepKey(change.key, change.keyFormat, change.keyLength) ? kAccepted : kBadWepKey;
    }
    if (usesPreSharedKey(change.settings.encryption)) {
        takeLongText(change.key, request, in.pre_shared_key);
        return isPreSharedKey(change.key) ? kAccepted : kBadPreSharedKey;
    }
    return kAccepted;
}

static uint32_t check(const uint8_t* request, WifiChange& change) {
    const WifiBlock& in = view<WifiRequest>(request).block;
    if (in.enable != 1) return kWifiNotEnabled;
    if (checkWifiChannel(in.channel) != 0) return kBadChannel;
    if (uint32_t why = checkWifiSettings(change.settings); why != kAccepted) return why;
    if (change.keyLength >= 2) return kBadWepKeyLength;
    if (change.keyFormat >= 2) return kBadWepKeyFormat;
    if (change.activeKey >= 4) return kBadActiveWepKey;
    return checkKey(request, change);
}

static void setWifi(const uint8_t* request, uint8_t* reply) {
    WifiChange change;
    parse(request, change);
    if (uint32_t why = check(request, change); why != kAccepted) return refuse(reply, why);
    writeWifiSettings(change.settings);
    write(kWifiWepKeyFormat, change.keyFormat);
    write(kWifiWepKeyLength, change.keyLength);
    write(kWifiActiveWepKey, change.activeKey);
    if (change.settings.encryption == kEncryptionWep) writeWepKey(change.activeKey, change.key);
    if (usesPreSharedKey(change.settings.encryption)) write(kWifiPreSharedKey, change.key);
    finishWifiChange(reply);
}

const Command kGetWifiInfo{"get_wifi_info", Addressing::MacOnly, Protection::Protected, sizeof(WifiReply), getWifi};
const Command kSetWifiInfo{"set_wifi_info", Addressing::MacOnly, Protection::Protected, sizeof(SettingReply), setWifi};
