#include <arpa/inet.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "platform.h"
#include "small_file.h"

// The name server with that number, from 0, of those with an IPv4 address.
static int findNameServer(int number, uint8_t address[4]) {
    char text[4096];
    char server[64];
    if (readSmallFile("/etc/resolv.conf", text, sizeof text) < 0) return -1;
    for (const char* line = text; line != nullptr; line = strchr(line, '\n')) {
        if (*line == '\n') line++;
        in_addr found;
        if (sscanf(line, "nameserver %63s", server) != 1 || inet_pton(AF_INET, server, &found) != 1) continue;
        if (number-- > 0) continue;
        memcpy(address, &found, 4);
        return 0;
    }
    return -1;
}

// Return 0 and four bytes, first octet first, or -1 with the four bytes untouched.
int net_get_dns(uint8_t address[4]) { return findNameServer(0, address); }

int net_get_dns2(uint8_t address[4]) { return findNameServer(1, address); }
