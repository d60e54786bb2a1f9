#pragma once

// Has the first wireless interface scan for networks, and lists them as getSiteList does; the two paths are those of
// firstWirelessInterface. Returns 0, or -1 with the list untouched and a line on standard error.
int scanForNetworks(const char* devices, const char* classes, char* list, int size);
