// The one answer to every command that changes something: 38 bytes.
#pragma once

#include "packet_header.h"

struct SettingReply {
    PacketHeader header;
    Le32         result;        // 0, or why it was refused when `status` is 2
    Le32         wait_kind;     // 2 when the change takes the device away for a while, else 0
    Le32         milliseconds;  // how long that is
    uint8_t      reserved[4];   // zero
};
static_assert(sizeof(SettingReply) == 38);
static_assert(offsetof(SettingReply, result) == 22);
