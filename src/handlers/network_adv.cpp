// Advanced network settings: PPPoE (read only), UPnP and dynamic DNS.
#include "protocol/network_adv.h"

#include "handlers/commands.h"
#include "protocol/result_codes.h"
#include "util/reply_fields.h"

static constexpr int32_t kDdnsProvider = 4;
static constexpr char kDefaultProvider[] = "names.example.com;";
static_assert(sizeof kDefaultProvider == 18 + 1);

// Both DDNS and PPPoE are read into the same flag: what is told as PPPoE is DDNS when the PPPoE key is missing.
static uint8_t pppoeFlag() {
    uint8_t flag = readFlag("DDNS", "Enable");
    cfgRead("NETWORK_V4", "PPPoEEnable", &flag);
    return flag;
}

static void getNetworkAdv(const uint8_t*, uint8_t* reply) {
    NetworkAdvBlock& out = view<NetworkAdvReply>(reply).block;
    putEndedText(out.pppoe_user, "NETWORK_V4", "PPPoEUID");
    putEndedText(out.pppoe_password, "NETWORK_V4", "PPPoEUID");  // the password itself is never told
    uint8_t upnp = readFlag("UPnP", "Enable");
    out.service_values = static_cast<uint8_t>(upnp | pppoeFlag() << 1);
    out.service_mask = out.service_values;
    out.flag = 1;
    putEndedText(out.ddns_user, "DDNS", "UID");
    putEndedText(out.ddns_password, "DDNS", "PWD");
    putEndedText(out.ddns_host, "DDNS", "HOST");
    out.provider_count = 1;
    putText(out.provider_list, kDefaultProvider);
}

static void writeDdnsText(const char* key, const uint8_t* request, const uint8_t* field) {
    char text[kTextSize];
    takeLongText(text, request, field);
    writeText("DDNS", key, text);
}

static void setNetworkAdv(const uint8_t* request, uint8_t* reply) {
    const NetworkAdvBlock& in = view<NetworkAdvRequest>(request).block;
    if (in.leading >= 2) return setStatus(reply, kRefused);
    if (in.flag != 0) return refuse(reply, kBadNetworkFlag);
    uint8_t enable = 0;
    if (in.service_mask & kServiceUpnp) {
        enable = in.service_values & kServiceUpnp;
        writeFlag("UPnP", "Enable", enable);
    }
    if (in.service_mask & kServiceDdns) {
        writeFlag("DDNS", "Enable", enable);  // UPnP's value: the values have no bit for DDNS
        writeNumber("DDNS", "PROVIDER", kDdnsProvider);
        writeDdnsText("UID", request, in.ddns_user);
        writeDdnsText("PWD", request, in.ddns_password);
        writeDdnsText("HOST", request, in.ddns_host);
    }
}

const Command kGetNetworkAdvInfo{"get_network_adv_info", Addressing::MacOnly, Protection::Protected,
                                 sizeof(NetworkAdvReply), getNetworkAdv};
const Command kSetNetworkAdvInfo{"set_network_adv_info", Addressing::MacOnly, Protection::Protected,
                                 sizeof(SettingReply), setNetworkAdv};
