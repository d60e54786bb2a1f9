// The 22 bytes that open every datagram: request, reply and presence report.
#pragma once

#include <stddef.h>

#include "bytes.h"

struct PacketHeader {
    uint8_t magic[2];        // request FD FD, reply EE FE, presence report FF FF
    Le16    sequence;        // chosen by the requester, returned as it came; counter of the presence report
    Le16    opcode;          // command, returned as it came
    Mac     mac;             // request: the device meant, or FF:FF:FF:FF:FF:FF; reply: the device that answers
    Ipv4    address;         // request: 0.0.0.0 in a broadcast; reply: the served interface's address
    Le16    status;          // request: how it is addressed; reply: its outcome
    Le16    protocol;        // command family, returned as it came
    Le16    payload_length;  // bytes behind the header
};
static_assert(sizeof(PacketHeader) == 22);
static_assert(offsetof(PacketHeader, opcode) == 4);
static_assert(offsetof(PacketHeader, mac) == 6);
static_assert(offsetof(PacketHeader, status) == 16);
static_assert(offsetof(PacketHeader, protocol) == 18);

constexpr uint16_t kPort         = 62976;  // UDP, both ways
constexpr size_t   kDatagramSize = 1024;   // the longest datagram either side takes

constexpr uint8_t kRequestMagic[2]  = {0xFD, 0xFD};
constexpr uint8_t kReplyMagic[2]    = {0xEE, 0xFE};
constexpr uint8_t kPresenceMagic[2] = {0xFF, 0xFF};

// `status` of a request.
constexpr uint16_t kByMacOrBroadcast = 0;       // the MAC meant, or every device
constexpr uint16_t kByMac            = 0x7777;  // the MAC meant

// `status` of a reply.
constexpr uint16_t kDone     = 0;
constexpr uint16_t kRefused  = 2;  // a field failed validation; most commands say which by a result code
constexpr uint16_t kNotLogin = 3;  // wrong user name or password

// `protocol`: the command families.
constexpr uint16_t kLandapProtocol  = 1;
constexpr uint16_t kPrimaryProtocol = 2;
