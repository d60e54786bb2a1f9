// Advanced network settings: reading PPPoE, UPnP and dynamic DNS (0x00A6, a ProtectedRequest) and changing UPnP and
// dynamic DNS (0x00A7, answered by a SettingReply).
#pragma once

#include "credentials.h"

struct NetworkAdvBlock {
    uint8_t leading;             // get 0; set 0 or 1
    uint8_t pppoe_user[64];      // text, at most 63 bytes; not read from requests
    uint8_t pppoe_password[64];  // text; get: the user name again; not read from requests
    uint8_t service_values;      // bit 0 UPnP enabled; bit 1 get: PPPoE enabled
    uint8_t service_mask;        // get: the values again; set: what to apply, bit 0 UPnP, bit 1 DDNS
    uint8_t flag;                // get 1; set 0
    uint8_t ddns_user[64];       // text
    uint8_t ddns_password[64];   // text
    uint8_t ddns_host[64];       // text
    uint8_t provider_count;      // get 1; not read from requests
    uint8_t provider_list[200];  // text; get: host name and ";"; not read from requests
};
static_assert(sizeof(NetworkAdvBlock) == 525);
static_assert(offsetof(NetworkAdvBlock, service_values) == 129);
static_assert(offsetof(NetworkAdvBlock, ddns_user) == 132);
static_assert(offsetof(NetworkAdvBlock, provider_count) == 324);

struct NetworkAdvReply {
    PacketHeader    header;
    NetworkAdvBlock block;  // bytes 22-546
};
static_assert(sizeof(NetworkAdvReply) == 547);

struct NetworkAdvRequest {
    PacketHeader    header;
    Credentials     credentials;
    NetworkAdvBlock block;  // from byte 150
};
static_assert(offsetof(NetworkAdvRequest, block) == 150);

constexpr uint8_t kServiceUpnp  = 0x01;
constexpr uint8_t kServicePppoe = 0x02;  // in the values of a get
constexpr uint8_t kServiceDdns  = 0x02;  // in the mask of a set
