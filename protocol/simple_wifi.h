// Wireless settings in short, with the one key in use: reading (0x00AF, a ProtectedRequest) and changing (0x00B0,
// answered by a SettingReply).
#pragma once

#include "credentials.h"

struct SimpleWifiBlock {
    uint8_t enable;           // set: must be 1
    uint8_t ssid[36];         // text, at most 35 bytes
    uint8_t mode;             // 0-1
    uint8_t channel;          // number
    uint8_t authentication;   // code
    uint8_t encryption;       // 0-4
    uint8_t key[64];          // active WEP key or pre-shared key, text
    uint8_t reserved_105;     // zero
    uint8_t capabilities[2];  // get: 0F 1B
};
static_assert(sizeof(SimpleWifiBlock) == 108);
static_assert(offsetof(SimpleWifiBlock, mode) == 37);
static_assert(offsetof(SimpleWifiBlock, key) == 41);
static_assert(offsetof(SimpleWifiBlock, capabilities) == 106);

struct SimpleWifiReply {
    PacketHeader    header;
    SimpleWifiBlock block;  // bytes 22-129
};
static_assert(sizeof(SimpleWifiReply) == 130);

struct SimpleWifiRequest {
    PacketHeader    header;
    Credentials     credentials;
    SimpleWifiBlock block;  // from byte 150
};
static_assert(offsetof(SimpleWifiRequest, block) == 150);
