#include "util/wifi_channel.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "platform.h"

static constexpr char kChannelTable[] = "/etc/wifi_channel.ini";

static bool hasSection(const ListNode* sections, const char* name) {
    while (sections != nullptr && strcmp(sections->name, name) != 0) sections = sections->next;
    return sections != nullptr;
}

// Channel 0 is no channel, whatever the list says.
static bool hasChannel(const ListNode* fields, int channel) {
    while (fields != nullptr && (channel == 0 || atoi(fields->name) != channel)) fields = fields->next;
    return fields != nullptr;
}

int checkWifiChannel(int channel) {
    int region = 0;
    HWMIB_getRegion(&region);
    char name[16];
    snprintf(name, sizeof name, "%d", region);
    ListNode* sections = CfgEnumSec(kChannelTable);
    if (!hasSection(sections, name)) {
        ListFree(sections);
        return -1;
    }
    ListNode* fields = CfgEnumField(kChannelTable, name);
    bool allowed = hasChannel(fields, channel);
    ListFree(fields);
    ListFree(sections);
    return allowed ? 0 : -1;
}
