#include "handlers/wireless.h"

#include <stdio.h>
#include <string.h>

#include "camera/pending_actions.h"
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

bool usesPreSharedKey(int32_t encryption) { return encryption >= 2 && encryption <= 4; }

bool isWepKey(const char* key, int32_t format, int32_t length) {
    constexpr size_t characters[2][2] = {
        {5,  13}, // printable, 64 and 128 bit
        {10, 26}, // hexadecimal
    };
    if (format < kKeyText || format > kKeyHex || length < 0 || length > 1) return true;
    if (strlen(key) != characters[format][length]) return false;
    return (format == kKeyText ? checkAscii(key) : checkHex(key)) == 0;
}

bool isPreSharedKey(const char* key) {
    size_t length = strlen(key);
    if (length < 8 || length > 64) return false;
    return (length == 64 ? checkHex(key) : checkAscii(key)) == 0;
}

static void nameWepKey(char (&name)[24], int32_t index) { snprintf(name, sizeof name, "WEPKey%d", index); }

void readWepKey(int32_t index, char (&key)[kTextSize]) {
    char name[24];
    nameWepKey(name, index);
    readText("WIRELESS", name, key);
}

void writeWepKey(int32_t index, const char* key) {
    char name[24];
    nameWepKey(name, index);
    writeText("WIRELESS", name, key);
}

void writeWifiSettings(const WifiSettings& settings) {
    writeNumber("WIRELESS", "Channel", settings.channel);
    writeText("WIRELESS", "SSID", settings.ssid);
    writeNumber("WIRELESS", "Mode", settings.mode);
    writeNumber("WIRELESS", "Authentication", settings.authentication);
    writeNumber("WIRELESS", "Encryption", settings.encryption);
}

static void mirrorText(const char* key) {
    char text[kTextSize];
    readText("WIRELESS", key, text);
    writeText("WIRELESS_REP", key, text);
}

static void mirrorNumber(const char* key) { writeNumber("WIRELESS_REP", key, readNumber("WIRELESS", key)); }

static constexpr const char* kMirroredNumbers[] = {"Channel",      "Authentication", "Encryption",
                                                   "WEPKeyFormat", "WEPKeyLength",   "WEPActiveKey"};
static constexpr const char* kMirroredKeys[] = {"WEPKey0", "WEPKey1", "WEPKey2", "WEPKey3", "PreSharedKey"};

static void mirrorToRepeater() {
    if (readFlag("WIRELESS_REP", "SameWithClient") == 0) return;
    mirrorText("SSID");
    for (const char* key : kMirroredNumbers) mirrorNumber(key);
    for (const char* key : kMirroredKeys) mirrorText(key);
}

void finishWifiChange(uint8_t* reply) {
    mirrorToRepeater();
    accept(reply, kResetMilliseconds);
    g_nWifiReset = 1;
}
