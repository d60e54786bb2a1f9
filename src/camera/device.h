// Which device this is: the served interface and its MAC, read by every handler.
#pragma once

#include <stdint.h>

extern char g_szInterfaceName[64];  // NUL-padded text, at most 63 bytes
extern uint8_t g_uDeviceMac[6];     // zero when the interface has none

// Takes the name from the command line and asks the platform for the MAC. Returns 0, or -1 for a null name.
int initDevice(const char* interfaceName);

// Asks for the MAC anew, of an interface that was made again.
void readDeviceMac();
