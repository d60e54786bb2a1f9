// Wireless settings in full: reading (0x00A8, a ProtectedRequest) and changing (0x00A9, answered by a SettingReply).
#pragma once

#include "credentials.h"

struct WifiBlock {
    uint8_t enable;              // set: must be 1
    uint8_t channel;             // number
    uint8_t ssid[36];            // text, at most 35 bytes
    uint8_t mode_encryption;     // low nibble mode 0-1, high nibble encryption 0-4
    uint8_t auth_key_length;     // low nibble authentication code, high nibble WEP key length 0-1
    uint8_t key_format_active;   // low nibble WEP key format 0-1, high nibble active WEP key 0-3
    uint8_t reserved_41;         // zero
    uint8_t wep_key[4][32];      // text, at most 31 bytes each
    uint8_t pre_shared_key[68];  // text, at most 67 bytes
    uint8_t capabilities[10];    // get: FF 00 00 00 03 0F 1B 03 03 0F
    uint8_t reserved_248[4];     // zero
};
static_assert(sizeof(WifiBlock) == 252);
static_assert(offsetof(WifiBlock, mode_encryption) == 38);
static_assert(offsetof(WifiBlock, wep_key) == 42);
static_assert(offsetof(WifiBlock, pre_shared_key) == 170);
static_assert(offsetof(WifiBlock, capabilities) == 238);

struct WifiReply {
    PacketHeader header;
    WifiBlock    block;  // bytes 22-273
};
static_assert(sizeof(WifiReply) == 274);

struct WifiRequest {
    PacketHeader header;
    Credentials  credentials;
    WifiBlock    block;  // from byte 150
};
static_assert(offsetof(WifiRequest, block) == 150);
