// Set basic information (0x00A2): camera name, web server port and IPv4 addressing in one request. Answered by a
// SettingReply.
#pragma once

#include "credentials.h"

struct BasicInfoRequest {
    PacketHeader header;
    Credentials  credentials;
    uint8_t      name[64];         // camera name, text; its first 63 bytes count
    Ipv4         address;          // static address
    Le16         http_port;        // web server; neither 0 nor 8088
    uint8_t      reserved_220[2];  // not read
    Ipv4         mask;             // static
    Ipv4         gateway;          // static
    Ipv4         dns;              // first name server, static
    Ipv4         dns2;             // second name server, static
    uint8_t      dhcp;             // 0 static, 1 DHCP
};
static_assert(sizeof(BasicInfoRequest) == 239);
static_assert(offsetof(BasicInfoRequest, address) == 214);
static_assert(offsetof(BasicInfoRequest, http_port) == 218);
static_assert(offsetof(BasicInfoRequest, mask) == 222);

constexpr uint16_t kReservedPort = 8088;
