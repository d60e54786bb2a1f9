// What every reply of the daemon must be.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace fuzz {

// What the store had when the request came.
struct Login {
    std::string name, password;
};

// `request` is what was received, in its buffer of 1024 bytes; `reply` is what is sent.
void checkReply(std::span<const uint8_t> request, std::span<const uint8_t> reply, const Login& login);

}  // namespace fuzz
