// What every protected request carries behind its header: the administrator's name and password.
#pragma once

#include "packet_header.h"

struct Credentials {
    uint8_t user[64];      // Base64 text, NUL-terminated
    uint8_t password[64];  // Base64 text, NUL-terminated
};
static_assert(sizeof(Credentials) == 128);

struct ProtectedRequest {
    PacketHeader header;
    Credentials  credentials;  // bytes 22-149
};
static_assert(sizeof(ProtectedRequest) == 150);
