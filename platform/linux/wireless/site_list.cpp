#include "wireless/site_list.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include "common/complain.h"
#include "common/run_program.h"
#include "common/small_file.h"
#include "platform.h"
#include "wireless/iw_scan.h"
#include "wireless/wireless_interface.h"

static constexpr int kMostScanSeconds = 20;

static int readList(const char* path, char* buffer, int size) {
    if (readSmallFile(path, buffer, static_cast<size_t>(size)) >= 0) return 0;
    complain("no list of networks: cannot read %s: %s", path, strerror(errno));
    return -1;
}

int scanForNetworks(const char* devices, const char* classes, char* list, int size) {
    static char g_output[256 * 1024];
    char interface[IFNAMSIZ];
    if (!firstWirelessInterface(devices, classes, interface)) {
        complain("no list of networks: no wireless interface");
        return -1;
    }
    const char* const command[] = {"iw", "dev", interface, "scan", nullptr};
    size_t length;
    int status = runProgram(command, kMostScanSeconds, g_output, sizeof g_output, length);
    if (status != 0 && strncmp(g_output, "BSS ", 4) != 0) {
        complain("no list of networks: iw dev %s scan failed", interface);
        return -1;
    }
    return siteListFromScan(g_output, length, list, static_cast<size_t>(size)) < 0 ? -1 : 0;
}

int getSiteList(char* buffer, int size) {
    if (buffer == nullptr || size <= 0) return -1;
    const char* path = getenv("QVP_SITE_LIST");
    if (path != nullptr && path[0] != '\0') return readList(path, buffer, size);
    return scanForNetworks("/proc/net/dev", "/sys/class/net", buffer, size);
}
