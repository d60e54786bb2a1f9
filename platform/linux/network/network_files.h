// What the kernel and the system tell in text files; the path is a parameter so that any such file can be read.
#pragma once

#include <stdint.h>

// The gateway of the interface's default route with the lowest metric, from a file like /proc/net/route. Returns 0, or
// -1 with the address untouched.
int gatewayFromRoutes(const char* path, const char* interface, uint8_t address[4]);

// The IPv4 name server number `index`, from 0, of a file like /etc/resolv.conf; other name servers do not count.
// Returns 0, or -1 with the address untouched.
int nameServerFromFile(const char* path, int index, uint8_t address[4]);
