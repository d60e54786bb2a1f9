// The wireless site survey: starting a scan (0x00B1, answered by a SettingReply) and fetching its result (0x00AE). Both
// requests are a ProtectedRequest.
#pragma once

#include "credentials.h"

struct SiteEntry {
    uint8_t ssid[33];                // text, at most 32 bytes
    uint8_t signal;                  // as the driver tells it
    uint8_t type_cipher;             // bit 0 not an infrastructure network, high nibble cipher code
    uint8_t authentication_channel;  // low nibble authentication code, high nibble channel, its low bits
};
static_assert(sizeof(SiteEntry) == 36);

struct SiteListReply {
    PacketHeader header;
    SiteEntry    entries[20];   // from byte 22
    uint8_t      reserved[2];   // zero
    uint8_t      continued[2];  // FF FF when more networks follow than fit
};
static_assert(sizeof(SiteListReply) == 746);
static_assert(offsetof(SiteListReply, continued) == 744);
