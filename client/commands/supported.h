// Which of the optional commands a camera says it serves.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace client {

std::vector<uint16_t> decodeSupported(std::span<const uint8_t> reply);

// What a command is called, "get wireless settings"; "" for an unknown opcode.
const char* commandName(uint16_t opcode);

}  // namespace client
