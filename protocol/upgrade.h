// Firmware and configuration upgrade: layouts of two commands that no opcode reaches.
#pragma once

#include "packet_header.h"

struct UpgradeRequest {
    PacketHeader header;
    uint8_t      kind;            // returned as it came
    uint8_t      reserved_23[2];  // not read
    Be32         number;          // not used
    uint8_t      text[128];       // not used
};
static_assert(sizeof(UpgradeRequest) == 157);

struct UpgradeReply {
    PacketHeader header;
    uint8_t      kind;           // the request's
    uint8_t      accepted;       // 1
    uint8_t      reserved[128];  // zero
};
static_assert(sizeof(UpgradeReply) == 152);
