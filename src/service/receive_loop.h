// The receive loop: one datagram in, its reply out, then whatever the command left to do.
#pragma once

#include <stdint.h>

// Serves until a stop is asked for or the wait fails. `received` and `reply` are 1024 bytes each.
void runReceiveLoop(uint8_t* received, uint8_t* reply);
