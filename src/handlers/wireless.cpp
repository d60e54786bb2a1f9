#include "handlers/wireless.h"

#include <stdio.h>
#include <string.h>

#include "camera/pending_actions.h"
#include "protocol/result_codes.h"
#include "util/packet.h"
#include "util/validators.h"

static constexpr uint8_t kWireCodes[] = {0, 1, 3, 4, 5};  // by the store's value
static constexpr uint32_t kResetMilliseconds = 5000;

int32_t storedAuthentication(uint8_t wireCode) {
    for (size_t i = 0; i < sizeof kWireCodes; i++) {
        if (kWireCodes[i] == wireCode) return static_cast<int32_t>(i);
    }
    return -1;
}

uint8_t wireAuthentication(int32_t stored) {
    bool known = stored >= 0 && stored < static_cast<int32_t>(sizeof kWireCodes);
    return known ? kWireCodes[stored] : 0;
}

uint32_t checkWifiSettings(const WifiSettings& settings) {
    if (settings.mode >= 2) return kBadMode;
    if (settings.encryption >= 5) return kBadEncryption;
    return settings.authentication == -1 ? kBadAuthentication : kAccepted;
}

bool usesPreSharedKey(int32_t encryption) { return encryption >= 2 && encryption <= 4; }

bool isWepKey(const char* key, int32_t format, int32_t length) {
    constexpr size_t kCharacters[2][2] = {
        {5,  13}, // printable, 64 and 128 bit
        {10, 26}, // hexadecimal
    };
    if (format < kKeyText || format > kKeyHex || length < 0 || length > 1) return true;
    if (strlen(key) != kCharacters[format][length]) return false;
    return (format == kKeyText ? checkAscii(key) : checkHex(key)) == 0;
}

bool isPreSharedKey(const char* key) {
    size_t length = strlen(key);
    if (length < 8 || length > 64) return false;
    return (length == 64 ? checkHex(key) : checkAscii(key)) == 0;
}

// The key of any index, named in `name`: the store decides what becomes of one outside 0-3.
static TextKey wepKey(int32_t index, char (&name)[24]) {
    snprintf(name, sizeof name, "WEPKey%d", index);
    return {kWifiWepKey0.section, name};
}

void readWepKey(int32_t index, char (&key)[kTextSize]) {
    char name[24];
    read(wepKey(index, name), key);
}

void writeWepKey(int32_t index, const char (&key)[kTextSize]) {
    char name[24];
    write(wepKey(index, name), key);
}

void writeWifiSettings(const WifiSettings& settings) {
    write(kWifiChannel, settings.channel);
    write(kWifiSsid, settings.ssid);
    write(kWifiMode, settings.mode);
    write(kWifiAuthentication, settings.authentication);
    write(kWifiEncryption, settings.encryption);
}

static void mirror(TextKey from, TextKey to) {
    char text[kTextSize];
    read(from, text);
    write(to, text);
}

static void mirror(NumberKey from, NumberKey to) { write(to, read(from)); }

static void mirrorToRepeater() {
    if (read(kRepeaterFollowsWifi) == 0) return;
    mirror(kWifiSsid, kRepeaterSsid);
    mirror(kWifiChannel, kRepeaterChannel);
    mirror(kWifiAuthentication, kRepeaterAuthentication);
    mirror(kWifiEncryption, kRepeaterEncryption);
    mirror(kWifiWepKeyFormat, kRepeaterWepKeyFormat);
    mirror(kWifiWepKeyLength, kRepeaterWepKeyLength);
    mirror(kWifiActiveWepKey, kRepeaterActiveWepKey);
    mirror(kWifiWepKey0, kRepeaterWepKey0);
    mirror(kWifiWepKey1, kRepeaterWepKey1);
    mirror(kWifiWepKey2, kRepeaterWepKey2);
    mirror(kWifiWepKey3, kRepeaterWepKey3);
    mirror(kWifiPreSharedKey, kRepeaterPreSharedKey);
}

void finishWifiChange(uint8_t* reply) {
    mirrorToRepeater();
    acceptChange(reply, kResetMilliseconds);
    g_nWifiReset = 1;
}
