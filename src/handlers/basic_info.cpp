// Set-up in one request: camera name, web server port, IPv4 addressing.
#include "protocol/basic_info.h"

#include <stdio.h>

#include "camera/pending_actions.h"
#include "camera/settings.h"
#include "handlers/commands.h"
#include "protocol/result_codes.h"
#include "util/packet.h"

static constexpr size_t kLongestName = 63;
static constexpr uint32_t kRestartMilliseconds = 10000;

static uint32_t check(const BasicInfoRequest& in) {
    uint16_t port = load(in.http_port);
    if (port == 0 || port == kReservedPort) return kBadPort;
    return in.dhcp >= 2 ? kBadAddressMode : kAccepted;
}

static void writeAddress(TextKey key, Ipv4 address) {
    char text[kTextSize] = {};
    const uint8_t* octets = address.bytes;
    snprintf(text, sizeof text, "%d.%d.%d.%d", octets[0], octets[1], octets[2], octets[3]);
    write(key, text);
}

static void writeAddressing(const BasicInfoRequest& in) {
    write(kBootProtocol, in.dhcp);
    if (in.dhcp != 0) return;
    writeAddress(kIpAddress, in.address);
    writeAddress(kSubnetMask, in.mask);
    writeAddress(kGateway, in.gateway);
    writeAddress(kNameServer, in.dns);
    writeAddress(kSecondNameServer, in.dns2);
}

static void setBasicInfo(const uint8_t* request, uint8_t* reply) {
    const BasicInfoRequest& in = view<BasicInfoRequest>(request);
    if (uint32_t why = check(in); why != kAccepted) return refuse(reply, why);
    char name[kTextSize];
    takeText(name, in.name);
    name[kLongestName] = '\0';
    write(kCameraName, name);
    g_nDeviceNameReset = 1;
    write(kHttpPort, load(in.http_port));
    g_nWebServerReset = 1;
    writeAddressing(in);
    g_nNetworkReset = 1;
    acceptChange(reply, kRestartMilliseconds);
}

const Command kSetBasicInfo{"set_basic_info", Addressing::MacOnly, Protection::Protected, sizeof(SettingReply),
                            setBasicInfo};
