// What the full and the short wireless commands share: codes, key rules, the store's keys, the mirror, the answer.
#pragma once

#include <stdint.h>

#include "camera/settings.h"

constexpr int32_t kEncryptionWep = 1;
constexpr int32_t kKeyText = 0;  // WEP key format: printable
constexpr int32_t kKeyHex = 1;   // WEP key format: hexadecimal digits

// The settings both commands carry.
struct WifiSettings {
    uint8_t channel;
    char ssid[kTextSize];
    int32_t mode;
    int32_t authentication;  // the store's value
    int32_t encryption;
};

// Authentication is numbered 0, 1, 3, 4, 5 on the wire and 0 to 4 in the store.
int32_t storedAuthentication(uint8_t wireCode);  // -1: no such code
uint8_t wireAuthentication(int32_t stored);      // 0 for a value outside 0-4

bool usesPreSharedKey(int32_t encryption);

// The result code for what both commands check in the same way, kAccepted when all of it holds.
uint32_t checkWifiSettings(const WifiSettings& settings);

// Length and characters fit the format and length; a format or length outside 0-1 lets any key through.
bool isWepKey(const char* key, int32_t format, int32_t length);
bool isPreSharedKey(const char* key);

void readWepKey(int32_t index, char (&key)[kTextSize]);
void writeWepKey(int32_t index, const char (&key)[kTextSize]);

void writeWifiSettings(const WifiSettings& settings);

// Ends an accepted change: mirrors it to the repeater's section when that follows the client's, fills the reply and
// asks for the wireless reset.
void finishWifiChange(uint8_t* reply);
