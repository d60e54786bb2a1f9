#include "wireless/site_list.h"

#include <errno.h>
#include <net/if.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>

#include "common/complain.h"
#include "common/run_program.h"
#include "common/small_file.h"
#include "platform.h"
#include "wireless/iw_scan.h"
#include "wireless/wireless_interface.h"

static constexpr int kMostScanSeconds = 20;

static char fetched[256 * 1024];  // what was read or printed, so that the caller's list is touched only by a whole one

static int readList(const char* path, char* list, size_t size) {
    ssize_t length = readSmallFile(path, fetched, size < sizeof fetched ? size : sizeof fetched);
    if (length < 0) {
        complain("no list of networks: cannot read %s: %s", path, strerror(errno));
        return -1;
    }
    memcpy(list, fetched, static_cast<size_t>(length) + 1);
    return 0;
}

int scanForNetworks(const char* devices, const char* classes, char* list, int size) {
    char interface[IFNAMSIZ];
    if (!firstWirelessInterface(devices, classes, interface)) {
        complain("no list of networks: no wireless interface");
        return -1;
    }
    const char* const command[] = {"iw", "dev", interface, "scan", nullptr};
    size_t length;
    int status = runProgram(command, kMostScanSeconds, fetched, sizeof fetched, length);
    if (status != 0 && strncmp(fetched, "BSS ", 4) != 0) {
        complain("no list of networks: iw dev %s scan failed", interface);
        return -1;
    }
    return siteListFromScan(fetched, length, list, static_cast<size_t>(size)) < 0 ? -1 : 0;
}

int getSiteList(char* buffer, int size) {
    if (buffer == nullptr || size <= 0) return -1;
    const char* path = getenv("QVP_SITE_LIST");
    if (path != nullptr && path[0] != '\0') return readList(path, buffer, static_cast<size_t>(size));
    return scanForNetworks("/proc/net/dev", "/sys/class/net", buffer, size);
}
