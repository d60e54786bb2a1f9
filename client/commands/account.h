// The administrator's account: are name and password right, and a new password.
#pragma once

#include "client/login.h"

namespace client {

enum class UserClass { Administrator, Other };

UserClass decodeUserClass(std::span<const uint8_t> reply);

// The request that changes the password. Throws Error BadValue for a password that does not fit.
std::vector<uint8_t> encodePasswordChange(const Login& login, const Secret& password);

}  // namespace client
