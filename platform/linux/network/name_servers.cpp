#include <arpa/inet.h>
#include <stdint.h>
#include <string.h>

#include "common/small_file.h"
#include "network/network_files.h"
#include "platform.h"

static constexpr char kResolverFile[] = "/etc/resolv.conf";

// One line of the file, "nameserver ADDRESS" with any blanks. It is cut into words in place.
static bool readNameServer(char* line, uint8_t address[4]) {
    char* rest = nullptr;
    const char* keyword = strtok_r(line, " \t\r", &rest);
    if (keyword == nullptr || strcmp(keyword, "nameserver") != 0) return false;
    const char* text = strtok_r(nullptr, " \t\r", &rest);
    return text != nullptr && inet_pton(AF_INET, text, address) == 1;
}

int nameServerFromFile(const char* path, int index, uint8_t address[4]) {
    char text[8192];
    if (address == nullptr || readSmallFile(path, text, sizeof text) < 0) return -1;
    char* rest = nullptr;
    for (char* line = strtok_r(text, "\n", &rest); line != nullptr; line = strtok_r(nullptr, "\n", &rest)) {
        uint8_t found[4];
        if (!readNameServer(line, found) || index-- > 0) continue;
        memcpy(address, found, sizeof found);
        return 0;
    }
    return -1;
}

int net_get_dns(uint8_t address[4]) { return nameServerFromFile(kResolverFile, 0, address); }

int net_get_dns2(uint8_t address[4]) { return nameServerFromFile(kResolverFile, 1, address); }
