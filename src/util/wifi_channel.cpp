#include "util/wifi_channel.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "platform.h"

static constexpr char kChannelTable[] = "/etc/wifi_channel.ini";

static bool hasSection(const char* name) {
    ListNode* sections = CfgEnumSec(kChannelTable);
    const ListNode* section = sections;
    while (section != nullptr && strcmp(section->name, name) != 0) section = section->next;
    bool found = section != nullptr;
    ListFree(sections);
    return found;
}

static bool listsChannel(const char* section, int channel) {
    ListNode* fields = CfgEnumField(kChannelTable, section);
    const ListNode* field = fields;
    while (field != nullptr && atoi(field->name) != channel) field = field->next;
    bool found = field != nullptr;
    ListFree(fields);
    return found;
}

int checkWifiChannel(int channel) {
    int region = 0;
    HWMIB_getRegion(&region);
    char section[16];
    snprintf(section, sizeof section, "%d", region);
    if (!hasSection(section) || channel == 0) return -1;
    return listsChannel(section, channel) ? 0 : -1;
}
