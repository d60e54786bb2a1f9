// The wireless settings in short: one key, its kind as it stands in the store.
#include "protocol/simple_wifi.h"

#include <string.h>

#include "camera/settings.h"
#include "handlers/commands.h"
#include "handlers/wireless.h"
#include "protocol/result_codes.h"
#include "util/reply_fields.h"

static constexpr uint8_t kCapabilities[2] = {0x0F, 0x1B};

static void readActiveKey(int32_t encryption, char (&key)[kTextSize]) {
    memset(key, 0, sizeof key);
    if (encryption == kEncryptionWep) readWepKey(read(kWifiActiveWepKey), key);
    if (usesPreSharedKey(encryption)) read(kWifiPreSharedKey, key);
}

static void getSimpleWifi(const uint8_t*, uint8_t* reply) {
    SimpleWifiBlock& out = view<SimpleWifiReply>(reply).block;
    out.enable = read(kWifiEnable);
    putEndedText(out.ssid, kWifiSsid);
    out.mode = static_cast<uint8_t>(read(kWifiMode));
    out.channel = static_cast<uint8_t>(read(kWifiChannel));
    out.authentication = wireAuthentication(read(kWifiAuthentication));
    int32_t encryption = read(kWifiEncryption);
    out.encryption = static_cast<uint8_t>(encryption);
    char key[kTextSize];
    readActiveKey(encryption, key);
    putText(out.key, key);
    memcpy(out.capabilities, kCapabilities, sizeof out.capabilities);
}

// A request taken apart, with the active key's index from the store.
struct SimpleWifiChange {
    WifiSettings settings;
    int32_t activeKey;
    char key[kTextSize];
};

static uint32_t check(const SimpleWifiBlock& in, const WifiSettings& settings) {
    return in.enable == 1 ? checkWifiSettings(settings) : kWifiNotEnabled;
}

static uint32_t checkKey(SimpleWifiChange& change) {
    int32_t format = read(kWifiWepKeyFormat);
    int32_t length = read(kWifiWepKeyLength);
    change.activeKey = read(kWifiActiveWepKey);
    int32_t encryption = change.settings.encryption;
    if (encryption == kEncryptionWep && !isWepKey(change.key, format, length)) return kBadWepKey;
    if (usesPreSharedKey(encryption) && !isPreSharedKey(change.key)) return kBadPreSharedKey;
    return kAccepted;
}

static void setSimpleWifi(const uint8_t* request, uint8_t* reply) {
    const SimpleWifiBlock& in = view<SimpleWifiRequest>(request).block;
    SimpleWifiChange change;
    change.settings.channel = in.channel;
    takeLongText(change.settings.ssid, request, in.ssid);
    change.settings.mode = in.mode;
    change.settings.authentication = storedAuthentication(in.authentication);
    change.settings.encryption = in.encryption;
    takeLongText(change.key, request, in.key);
    uint32_t why = check(in, change.settings);
    if (why == kAccepted) why = checkKey(change);
    if (why != kAccepted) return refuse(reply, why);
    writeWifiSettings(change.settings);
    if (in.encryption == kEncryptionWep) writeWepKey(change.activeKey, change.key);
    if (usesPreSharedKey(in.encryption)) write(kWifiPreSharedKey, change.key);
    finishWifiChange(reply);
}

const Command kGetSimpleWifiInfo{"get_simple_wifi_info", Addressing::MacOnly, Protection::Protected,
                                 sizeof(SimpleWifiReply), getSimpleWifi};
const Command kSetSimpleWifiInfo{"set_simple_wifi_info", Addressing::MacOnly, Protection::Protected,
                                 sizeof(SettingReply), setSimpleWifi};
