// Two commands that announce an upgrade. They are answered when called, but no opcode reaches them, and they start
// nothing.
#pragma once

#include "util/command.h"

Handler config_upgrade;
Handler firmware_upgrade;
