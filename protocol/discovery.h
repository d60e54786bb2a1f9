// Discovery (0x00A1): who the camera is and how it is reached. The request is the header alone.
#pragma once

#include "packet_header.h"

// The landap family's whole reply, and the first 334 bytes of the primary family's.
struct DiscoveryRecord {
    PacketHeader header;
    uint8_t      brand[64];        // text, no NUL when it fills the field
    uint8_t      product[64];      // text
    uint8_t      model[32];        // text
    uint8_t      firmware[32];     // text "%d.%02d"
    uint8_t      fixed_214;        // primary 3, landap 1; nobody knows why
    uint8_t      fixed_215;        // 0
    uint8_t      fixed_216;        // 1
    uint8_t      reserved_217[3];  // zero
    Mac          mac;              // the device's
    uint8_t      name[64];         // camera name, text
    Ipv4         address;          // of the served interface
    Be16         http_port;        // web server
    uint8_t      reserved_296[2];  // zero
    Ipv4         mask;             // of the served interface
    Ipv4         gateway;          // default
    Ipv4         dns;              // first name server
    Ipv4         dns2;             // second name server
    uint8_t      dhcp;             // 1 DHCP, 0 static
    uint8_t      local_time[16];   // text YYYYMMDDhhmmss
    Le16         timezone;         // id in the tools' numbering, 0 none
    uint8_t      daylight_saving;  // 0 off
};
static_assert(sizeof(DiscoveryRecord) == 334);
static_assert(offsetof(DiscoveryRecord, fixed_214) == 214);
static_assert(offsetof(DiscoveryRecord, name) == 226);
static_assert(offsetof(DiscoveryRecord, http_port) == 294);
static_assert(offsetof(DiscoveryRecord, local_time) == 315);
static_assert(offsetof(DiscoveryRecord, timezone) == 331);

struct DiscoveryReply {
    DiscoveryRecord common;
    uint8_t         reserved_334[32];   // zero
    uint8_t         hardware[32];       // hardware version, text
    uint8_t         reserved_398[107];  // zero
};
static_assert(sizeof(DiscoveryReply) == 505);
static_assert(offsetof(DiscoveryReply, hardware) == 366);
