#include "handlers/site_survey.h"

#include <stdlib.h>
#include <string.h>

#include "camera/pending_actions.h"
#include "handlers/commands.h"
#include "handlers/site_line.h"
#include "protocol/site_survey.h"
#include "util/packet.h"

static constexpr uint32_t kScanMilliseconds = 20000;
static constexpr int kSlots = 20;
static constexpr size_t kLongestSsid = 32;

static void askScan(const uint8_t*, uint8_t* reply) {
    acceptChange(reply, kScanMilliseconds);
    g_nInitSiteSurvey = 1;
}

static void leaveEmpty(const uint8_t*, uint8_t*) {}

const Command kInitWifiSiteSurvey{"init_wifi_site_survey", Addressing::MacOnly, Protection::Protected,
                                  sizeof(SettingReply), askScan};
const Command kCheckSiteSurveyRequest{"checkSiteSurveyRequest", Addressing::MacOnly, Protection::Protected,
                                      sizeof(SiteListReply), leaveEmpty};

int checkSiteSurvey(const Family& family, const uint8_t* request, uint8_t* reply, int capacity, int& accepted) {
    int length = serve(family, kCheckSiteSurveyRequest, request, reply, capacity);
    if (length > 0) accepted = load(view<PacketHeader>(reply).status) == kDone ? 1 : 0;
    return length;
}

static void startPage(const uint8_t* request, uint8_t* reply) {
    Le16 status = view<PacketHeader>(reply).status;
    memset(reply, 0, sizeof(SiteListReply));
    fillReplyHeader(view<PacketHeader>(request), reply, sizeof(SiteListReply));
    view<PacketHeader>(reply).status = status;
}

static uint8_t lowBits(const char* number) { return static_cast<uint8_t>(strtoll(number, nullptr, 10)); }

static void fillEntry(SiteEntry& entry, const SiteLine& line) {
    SiteSecurity security = classifySecurity(line.security);
    putText(entry.ssid, line.ssid, kLongestSsid);
    entry.signal = lowBits(line.signal);
    uint8_t adHoc = strstr(line.networkType, "In") == nullptr ? 1 : 0;
    entry.type_cipher = static_cast<uint8_t>(security.cipher << 4 | adHoc);
    entry.authentication_channel = static_cast<uint8_t>(lowBits(line.channel) << 4 | security.authentication);
}

// Lines are counted as they are placed, so only page 0 is ever filled.
int fillSiteSurveyPage(const uint8_t* request, uint8_t* reply, int, int page, const char* sites, int size) {
    if (sites == nullptr) return -1;
    startPage(request, reply);
    SiteListReply& out = view<SiteListReply>(reply);
    SiteText text{sites, sites + size};
    SiteLine line;
    nextSiteLine(text, line);  // the heading
    int count = 0;
    while (count < kSlots && nextSiteLine(text, line)) {
        if (count / kSlots != page) continue;
        fillEntry(out.entries[count], line);
        count++;
    }
    if (count == kSlots && nextSiteLine(text, line)) memset(out.continued, 0xFF, sizeof out.continued);
    return count > 0 ? static_cast<int>(sizeof(SiteListReply)) : -1;
}
