#include <stdio.h>
#include <string.h>

#include "checks.h"
#include "platform.h"
#include "room.h"

static constexpr int kListSize = 21844;  // the daemon's buffer
static constexpr int kTypeColumn = 98;

static Room room;

// Every line but the first: a channel in front, "In" or "Ad" in its place.
static int countNetworks(const char* list) {
    int count = 0;
    const char* line = strchr(list, '\n');
    while (line != nullptr && line[1] != '\0') {
        line++;
        const size_t length = strcspn(line, "\n");
        const bool isType = length >= kTypeColumn + 2 &&
                            (memcmp(line + kTypeColumn, "In", 2) == 0 || memcmp(line + kTypeColumn, "Ad", 2) == 0);
        if (!isType) fail("line %d has neither \"In\" nor \"Ad\" at position %d", count + 2, kTypeColumn);
        if (atoi(line) <= 0) fail("line %d has no channel at position 0", count + 2);
        count++;
        line = strchr(line, '\n');
    }
    return count;
}

// The buffer is zeros when it is handed over.
static bool fillList(int size) {
    char what[64];
    snprintf(what, sizeof what, "a buffer of %d bytes", size);
    char* list = static_cast<char*>(prepare(room, static_cast<size_t>(size), 0));
    if (!holdsValue(room, getSiteList(list, size), what, 0)) return false;
    if (memchr(list, '\0', static_cast<size_t>(size)) != nullptr) return true;
    fail("%s: no NUL in it", what);
    return false;
}

void checkSiteList(const Settings&) {
    static char list[kListSize];
    if (!fillList(kListSize)) return note("there is no list");
    memcpy(list, inside(room), sizeof list);
    note("%d networks", countNetworks(list));
    if (!hasFailed()) fillList(150);
    if (leavesDescriptors([] { getSiteList(list, kListSize); })) fail("leaves descriptors open");
}

void checkRegion(const Settings&) {
    struct {
        int before, value, behind;
    } guarded;
    memset(&guarded, 0xA5, sizeof guarded);
    const int result = HWMIB_getRegion(&guarded.value);
    prepare(room, sizeof(int));
    memcpy(inside(room) - sizeof(int), &guarded, sizeof guarded);
    if (!holdsValue(room, result, "the region")) return note("none");
    note("%d", guarded.value);
    if (leavesDescriptors([] {
            int region;
            HWMIB_getRegion(&region);
        })) {
        fail("leaves descriptors open");
    }
}
