#pragma once

#include <net/if.h>

// The name of the first wireless interface of this machine: the first of `devices` (a file like /proc/net/dev) that has
// a folder `wireless` or `phy80211` in its own folder of `classes` (like /sys/class/net). False when there is none.
bool firstWirelessInterface(const char* devices, const char* classes, char name[IFNAMSIZ]);
