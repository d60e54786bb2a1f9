#include "wireless/wireless_interface.h"

#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "common/small_file.h"

static bool has(const char* classes, const char* name, const char* folder) {
    char path[PATH_MAX];
    int length = snprintf(path, sizeof path, "%s/%s/%s", classes, name, folder);
    return length < static_cast<int>(sizeof path) && access(path, F_OK) == 0;
}

// "  wlan0: 1234 ..."; the two heading lines have no colon.
static bool readName(const char* line, char name[IFNAMSIZ]) {
    static_assert(IFNAMSIZ == 16, "the width in the format below");
    char colon;
    return sscanf(line, " %15[^: ]%c", name, &colon) == 2 && colon == ':';
}

bool firstWirelessInterface(const char* devices, const char* classes, char name[IFNAMSIZ]) {
    static char table[16384];
    if (readSmallFile(devices, table, sizeof table) < 0) return false;
    char* rest = nullptr;
    for (char* line = strtok_r(table, "\n", &rest); line != nullptr; line = strtok_r(nullptr, "\n", &rest)) {
        if (readName(line, name) && (has(classes, name, "wireless") || has(classes, name, "phy80211"))) return true;
    }
    return false;
}
