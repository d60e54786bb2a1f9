// The administrator's account: user verification (0x00A3) and change of the password (0x00A4). The verification's
// request is a ProtectedRequest, the change is answered by a SettingReply.
#pragma once

#include "credentials.h"

struct UserVerificationReply {
    PacketHeader header;
    uint8_t      user_class;   // 1 in the group "admin", 2 in another, 0 wrong credentials
    uint8_t      reserved[3];  // zero
};
static_assert(sizeof(UserVerificationReply) == 26);

struct ChangeAdminRequest {
    PacketHeader header;
    Credentials  credentials;       // as they are now
    uint8_t      reserved_150[64];  // not read
    uint8_t      new_password[64];  // Base64 text, NUL-terminated
};
static_assert(sizeof(ChangeAdminRequest) == 278);
static_assert(offsetof(ChangeAdminRequest, new_password) == 214);
