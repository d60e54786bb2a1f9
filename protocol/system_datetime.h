// The clock: reading it (0x00AC, a ProtectedRequest) and setting it (0x00AD, answered by a SettingReply).
#pragma once

#include "credentials.h"

struct DatetimeReply {
    PacketHeader header;
    uint8_t      local_time[14];    // text YYYYMMDDhhmmss
    uint8_t      reserved_36[2];    // zero
    Le16         timezone;          // id in the tools' numbering, 0 none
    uint8_t      daylight_saving;   // 0 off
    uint8_t      ntp;               // 1 the clock follows the NTP server
    uint8_t      ntp_server[63];    // name or address, text
    uint8_t      reserved_105[17];  // zero
};
static_assert(sizeof(DatetimeReply) == 122);
static_assert(offsetof(DatetimeReply, timezone) == 38);
static_assert(offsetof(DatetimeReply, ntp_server) == 42);

struct DatetimeRequest {
    PacketHeader header;
    Credentials  credentials;
    uint8_t      local_time[16];   // text YYYYMMDDhhmmss; all zero digits leave the clock alone
    Le16         timezone;         // id in the tools' numbering
    uint8_t      daylight_saving;  // 0 off, 1 on
    uint8_t      ntp;              // 0 manual time, 1 follow the NTP server
    uint8_t      ntp_server[854];  // name or address, text up to its NUL, however long
};
static_assert(sizeof(DatetimeRequest) == kDatagramSize);
static_assert(offsetof(DatetimeRequest, local_time) == 150);
static_assert(offsetof(DatetimeRequest, timezone) == 166);
static_assert(offsetof(DatetimeRequest, ntp_server) == 170);
