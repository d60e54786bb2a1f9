// Two commands that announce an upgrade. They are answered when called, but no opcode reaches them, and they start
// nothing.
#pragma once

#include <stdint.h>

int config_upgrade(const uint8_t* request, uint8_t* reply, int capacity);
int firmware_upgrade(const uint8_t* request, uint8_t* reply, int capacity);
