// Alert information (0x0200): answered, but a camera of this kind has none to tell. The request is the header alone.
#pragma once

#include "packet_header.h"

struct AlertInfoReply {
    PacketHeader header;
    uint8_t      reserved[128];  // zero
};
static_assert(sizeof(AlertInfoReply) == 150);
