// Firmware and configuration upgrade: two commands that no opcode reaches.
#pragma once

#include "packet_header.h"

// Behind `kind` come numbers and a text, in one of two layouts told apart by `payload_length`; none of it is used.
struct UpgradeRequest {
    PacketHeader header;
    uint8_t      kind;  // returned as it came
};
static_assert(sizeof(UpgradeRequest) == 23);

struct UpgradeReply {
    PacketHeader header;
    uint8_t      kind;           // the request's
    uint8_t      accepted;       // 1
    uint8_t      reserved[128];  // zero
};
static_assert(sizeof(UpgradeReply) == 152);
