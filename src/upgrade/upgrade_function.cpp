#include "upgrade/upgrade_function.h"

#include <stdint.h>

#include "protocol/packet_header.h"
#include "protocol/upgrade.h"
#include "util/command.h"
#include "util/packet.h"

// The two layouts that requests come in; what stands in them is not used.
static constexpr uint16_t kShortPayload = 135;
static constexpr uint16_t kLongPayload = 148;

static void acknowledge(const uint8_t* request, uint8_t* reply) {
    UpgradeReply& out = view<UpgradeReply>(reply);
    out.kind = view<UpgradeRequest>(request).kind;
    out.accepted = 1;
}

static constexpr Command kConfigUpgrade{"config_upgrade", Addressing::MacOnly, Protection::Open, sizeof(UpgradeReply),
                                        acknowledge};
static constexpr Command kFirmwareUpgrade{"firmware_upgrade", Addressing::MacOnly, Protection::Open,
                                          sizeof(UpgradeReply), acknowledge};

// A request of neither layout is left no room for a reply: it passes the checks that come before that one, and nothing
// is filled.
static int answer(const Command& command, const uint8_t* request, uint8_t* reply, int capacity) {
    uint16_t payload = load(view<PacketHeader>(request).payload_length);
    bool isKnown = payload == kShortPayload || payload == kLongPayload;
    return serve(kPrimary, command, request, reply, isKnown ? capacity : 0);
}

int config_upgrade(const uint8_t* request, uint8_t* reply, int capacity) {
    return answer(kConfigUpgrade, request, reply, capacity);
}

int firmware_upgrade(const uint8_t* request, uint8_t* reply, int capacity) {
    return answer(kFirmwareUpgrade, request, reply, capacity);
}
