// The supported-function query (0x00A5): the optional commands a camera serves. The request is the header alone; the
// landap family checks credentials behind it when `payload_length` is not 0.
#pragma once

#include "packet_header.h"

struct SupportedFunctionsReply {
    PacketHeader header;
    Le16         opcodes[120];  // command codes, the unused slots zero
};
static_assert(sizeof(SupportedFunctionsReply) == 262);
