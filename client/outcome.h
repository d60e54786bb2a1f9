// What a reply says came of its request.
#pragma once

#include <chrono>
#include <span>
#include <string>

#include "protocol/packet_header.h"

namespace client {

// Why a camera refused, and what to try next: of the result code behind status 2.
std::string refusalText(uint32_t resultCode);

// Throws Error Credentials or Refused unless the reply's status says that it is done.
void checkOutcome(std::span<const uint8_t> reply);

// How long the camera says that the change takes it away; 0: it does not.
std::chrono::milliseconds timeAway(std::span<const uint8_t> reply);

}  // namespace client
