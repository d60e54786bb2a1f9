#include "client/presence.h"

#include <cstring>

#include "client/text.h"
#include "protocol/opcodes.h"

namespace client {

static bool isPresenceHeader(const PacketHeader& header) {
    return memcmp(header.magic, kPresenceMagic, sizeof header.magic) == 0 &&
           load(header.opcode) == opcode::kPresenceReport && load(header.protocol) == kPrimaryProtocol &&
           load(header.payload_length) == sizeof(PresenceReport) - sizeof(PacketHeader);
}

std::optional<Presence> decodePresence(std::span<const uint8_t> datagram) {
    PresenceReport report;
    if (datagram.size() != sizeof report) return std::nullopt;
    memcpy(&report, datagram.data(), sizeof report);
    if (!isPresenceHeader(report.header)) return std::nullopt;
    Presence presence{};
    presence.sequence = load(report.header.sequence);
    presence.mac = report.header.mac;
    presence.address = report.address;
    presence.netmask = report.mask;
    presence.name = fieldText(report.name);
    presence.product = fieldText(report.product);
    presence.firmware = fieldText(report.firmware);
    presence.hardware = fieldText(report.hardware);
    return presence;
}

}  // namespace client
