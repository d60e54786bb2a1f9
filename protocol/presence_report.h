// The presence report (0x00A0): broadcast at start-up and every 30 seconds, never asked for.
#pragma once

#include "packet_header.h"

struct PresenceReport {
    PacketHeader header;
    uint8_t      product[64];       // text
    uint8_t      fixed_86[32];      // the text "3"
    uint8_t      firmware[32];      // text "%d.%02d"
    Mac          mac;               // the device's
    uint8_t      hardware[32];      // hardware version, text
    uint8_t      reserved_188[32];  // zero
    uint8_t      name[64];          // camera name, text
    Ipv4         address;           // of the served interface
    Ipv4         mask;              // of the served interface
    uint8_t      reserved_292[25];  // zero
};
static_assert(sizeof(PresenceReport) == 317);
static_assert(offsetof(PresenceReport, mac) == 150);
static_assert(offsetof(PresenceReport, name) == 220);
static_assert(offsetof(PresenceReport, address) == 284);
