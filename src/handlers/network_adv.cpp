// Advanced network settings: PPPoE (read only), UPnP and dynamic DNS.
#include "protocol/network_adv.h"

#include "camera/settings.h"
#include "handlers/commands.h"
#include "protocol/result_codes.h"
#include "util/reply_fields.h"

static constexpr int32_t kDefaultProviderNumber = 4;
static constexpr char kDefaultProvider[] = "names.example.com;";
static_assert(sizeof kDefaultProvider == 18 + 1);

// Both DDNS and PPPoE are read into the same flag: what is told as PPPoE is DDNS when the PPPoE key is missing.
static uint8_t pppoeFlag() {
    uint8_t flag = read(kDdnsEnable);
    readInto(kPppoeEnable, flag);
    return flag;
}

static void getNetworkAdv(const uint8_t*, uint8_t* reply) {
    NetworkAdvBlock& out = view<NetworkAdvReply>(reply).block;
    putEndedText(out.pppoe_user, kPppoeUser);
    putEndedText(out.pppoe_password, kPppoeUser);  // the password itself is never told
    uint8_t upnp = read(kUpnpEnable);
    out.service_values = static_cast<uint8_t>(upnp | pppoeFlag() << 1);
    out.service_mask = out.service_values;
    out.flag = 1;
    putEndedText(out.ddns_user, kDdnsUser);
    putEndedText(out.ddns_password, kDdnsPassword);
    putEndedText(out.ddns_host, kDdnsHost);
    out.provider_count = 1;
    putText(out.provider_list, kDefaultProvider);
}

static void writeDdnsText(TextKey key, const uint8_t* request, const uint8_t* field) {
    char text[kTextSize];
    takeLongText(text, request, field);
    write(key, text);
}

static void setNetworkAdv(const uint8_t* request, uint8_t* reply) {
    const NetworkAdvBlock& in = view<NetworkAdvRequest>(request).block;
    if (in.leading >= 2) return setStatus(reply, kRefused);
    if (in.flag != 0) return refuse(reply, kBadNetworkFlag);
    uint8_t enable = 0;
    if (in.service_mask & kServiceUpnp) {
        enable = in.service_values & kServiceUpnp;
        write(kUpnpEnable, enable);
    }
    if (in.service_mask & kServiceDdns) {
        write(kDdnsEnable, enable);  // UPnP's value: the values have no bit for DDNS
        write(kDdnsProvider, kDefaultProviderNumber);
        writeDdnsText(kDdnsUser, request, in.ddns_user);
        writeDdnsText(kDdnsPassword, request, in.ddns_password);
        writeDdnsText(kDdnsHost, request, in.ddns_host);
    }
}

const Command kGetNetworkAdvInfo{"get_network_adv_info", Addressing::MacOnly, Protection::Protected,
                                 sizeof(NetworkAdvReply), getNetworkAdv};
const Command kSetNetworkAdvInfo{"set_network_adv_info", Addressing::MacOnly, Protection::Protected,
                                 sizeof(SettingReply), setNetworkAdv};
