#include "wireless/site_list.h"

#include <errno.h>
#include <net/if.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/types.h>

#include "common/complain.h"
#include "common/run_program.h"
#include "common/small_file.h"
#include "platform.h"
#include "wireless/iw_scan.h"
#include "wireless/wireless_interface.h"

static constexpr int kMostScanSeconds = 20;

// What is read or printed comes here first, so that the caller's list is touched only by a whole one. Borrowed from the
// system for as long as it is needed.
static constexpr size_t kFetched = 256 * 1024;

static char* borrowRoom() {
    void* room = mmap(nullptr, kFetched, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (room != MAP_FAILED) return static_cast<char*>(room);
    complain("no list of networks: no memory");
    return nullptr;
}

static int readList(const char* path, char* fetched, char* list, size_t size) {
    ssize_t length = readSmallFile(path, fetched, size < kFetched ? size : kFetched);
    if (length < 0) {
        complain("no list of networks: cannot read %s: %s", path, strerror(errno));
        return -1;
    }
    memcpy(list, fetched, static_cast<size_t>(length) + 1);
    return 0;
}

static int scan(const char* interface, char* fetched, char* list, size_t size) {
    const char* const command[] = {"iw", "dev", interface, "scan", nullptr};
    size_t length;
    int status = runProgram(command, kMostScanSeconds, fetched, kFetched, length);
    if (status != 0 && strncmp(fetched, "BSS ", 4) != 0) {
        complain("no list of networks: iw dev %s scan failed", interface);
        return -1;
    }
    return siteListFromScan(fetched, length, list, size) < 0 ? -1 : 0;
}

int scanForNetworks(const char* devices, const char* classes, char* list, int size) {
    char interface[IFNAMSIZ];
    if (!firstWirelessInterface(devices, classes, interface)) {
        complain("no list of networks: no wireless interface");
        return -1;
    }
    char* fetched = borrowRoom();
    if (fetched == nullptr) return -1;
    int result = scan(interface, fetched, list, static_cast<size_t>(size));
    munmap(fetched, kFetched);
    return result;
}

static int handThrough(const char* path, char* list, int size) {
    char* fetched = borrowRoom();
    if (fetched == nullptr) return -1;
    int result = readList(path, fetched, list, static_cast<size_t>(size));
    munmap(fetched, kFetched);
    return result;
}

int getSiteList(char* buffer, int size) {
    if (buffer == nullptr || size <= 0) return -1;
    const char* path = getenv("QVP_SITE_LIST");
    if (path != nullptr && path[0] != '\0') return handThrough(path, buffer, size);
    return scanForNetworks("/proc/net/dev", "/sys/class/net", buffer, size);
}
