#include <arpa/inet.h>
#include <stdint.h>
#include <string.h>

#include "common/kept_file.h"
#include "common/milliseconds.h"
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

int readNameServers(const char* path, uint8_t (&addresses)[kNameServers][4]) {
    char text[8192];
    int count = 0;
    if (readSmallFile(path, text, sizeof text) < 0) return -1;
    char* rest = nullptr;
    char* line = strtok_r(text, "\n", &rest);
    for (; line != nullptr && count < kNameServers; line = strtok_r(nullptr, "\n", &rest)) {
        if (readNameServer(line, addresses[count])) count++;
    }
    return count;
}

static KeptFile kept;
static uint8_t servers[kNameServers][4];
static int serverCount;

static void readAgain() {
    struct stat status;
    const int64_t start = millisecondsNow();
    const bool exists = stat(kResolverFile, &status) == 0;
    serverCount = readNameServers(kResolverFile, servers);
    if (!exists || serverCount < 0) return forget(kept);
    noteRead(kept, status, start);
}

static int give(int index, uint8_t address[4]) {
    if (address == nullptr) return -1;
    if (!wasLookedAt(kept) && !isStillSame(kept, kResolverFile)) readAgain();
    if (index >= serverCount) return -1;
    memcpy(address, servers[index], sizeof servers[index]);
    return 0;
}

int net_get_dns(uint8_t address[4]) { return give(0, address); }

int net_get_dns2(uint8_t address[4]) { return give(1, address); }
