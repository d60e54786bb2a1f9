// What the kernel and the system tell in text files; the path is a parameter so that any such file can be read.
#pragma once

#include <stdint.h>

// The gateway of the interface's default route with the lowest metric, from a file like /proc/net/route. Returns 0, or
// -1 with the address untouched.
int gatewayFromRoutes(const char* path, const char* interface, uint8_t address[4]);

constexpr int kNameServers = 2;

// The first IPv4 name servers of a file like /etc/resolv.conf; others do not count. Returns how many there are, -1 when
// the file cannot be read.
int readNameServers(const char* path, uint8_t (&addresses)[kNameServers][4]);
