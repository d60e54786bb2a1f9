// Discovery: who this camera is and how it is reached.
#include "protocol/discovery.h"

#include <string.h>

#include "camera/device.h"
#include "camera/settings.h"
#include "handlers/commands.h"
#include "platform.h"
#include "util/reply_fields.h"

static void putIdentity(DiscoveryRecord& out, uint8_t fixed214) {
    putStoredText(out.brand, kBrandName);
    putStoredText(out.product, kProduct);
    putStoredText(out.model, kModelName);
    putFirmwareVersion(out.firmware);
    read(kBuild);  // asked for by custom, sent nowhere
    out.fixed_214 = fixed214;
    out.fixed_215 = 0;
    out.fixed_216 = 1;
    memcpy(out.mac.bytes, g_uDeviceMac, sizeof out.mac);
    putStoredText(out.name, kCameraName);
}

static void putNetwork(DiscoveryRecord& out) {
    out.address = interfaceAddress();
    out.http_port = be16(static_cast<uint32_t>(read(kHttpPort)));
    net_get_netmask(g_szInterfaceName, out.mask.bytes);
    net_get_gateway(g_szInterfaceName, out.gateway.bytes);
    net_get_dns(out.dns.bytes);
    net_get_dns2(out.dns2.bytes);
    out.dhcp = read(kBootProtocol) == kBootProtocolDhcp ? 1 : 0;
}

static void putClock(DiscoveryRecord& out) {
    putLocalTime(out.local_time);
    out.timezone = storedTimezone();
    out.daylight_saving = read(kDaylightSaving);
}

static void putRecord(DiscoveryRecord& out, uint8_t fixed214) {
    putIdentity(out, fixed214);
    putNetwork(out);
    putClock(out);
}

static void describe(const uint8_t*, uint8_t* reply) {
    DiscoveryReply& out = view<DiscoveryReply>(reply);
    putRecord(out.common, 3);
    putStoredText(out.hardware, kHardwareVersion);
}

static void describeLandap(const uint8_t*, uint8_t* reply) { putRecord(view<DiscoveryRecord>(reply), 1); }

const Command kDiscovery{"discovery", Addressing::MacOrBroadcast, Protection::Open, sizeof(DiscoveryReply), describe};
const Command kLandapDiscovery{"discovery", Addressing::MacOrBroadcast, Protection::Open, sizeof(DiscoveryRecord),
                               describeLandap};
