#include "qvpctl/presence.h"

#include <cstring>

#include "protocol/opcodes.h"
#include "qvpctl/text.h"

static bool isPresenceHeader(const PacketHeader& header) {
    return memcmp(header.magic, kPresenceMagic, sizeof header.magic) == 0 &&
           load(header.opcode) == opcode::kPresenceReport && load(header.protocol) == kPrimaryProtocol &&
           load(header.payload_length) == sizeof(PresenceReport) - sizeof(PacketHeader);
}

std::optional<Presence> decodePresence(std::span<const uint8_t> datagram) {
    PresenceReport report;
    if (datagram.size() != sizeof report) {
        return std::nullopt;
    }
    memcpy(&report, datagram.data(), sizeof report);
    if (!isPresenceHeader(report.header)) {
        return std::nullopt;
    }
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

// "2026-01-31T23:59:59+01:00"
static std::string localTimeText(time_t time) {
    tm parts{};
    char text[sizeof "2026-01-31T23:59:59+0100 and room for later centuries"];
    localtime_r(&time, &parts);
    strftime(text, sizeof text, "%FT%T%z", &parts);
    std::string result(text);
    return result.insert(result.size() - 2, ":");
}

Record recordOf(const Presence& presence, time_t arrival) {
    return {
        {"time",      localTimeText(arrival)       },
        {"mac",       macText(presence.mac)        },
        {"address",   addressText(presence.address)},
        {"netmask",   addressText(presence.netmask)},
        {"name",      presence.name                },
        {"product",   presence.product             },
        {"firmware",  presence.firmware            },
        {"hardware",  presence.hardware            },
        {"sequence",  presence.sequence            },
        {"interface", presence.interface           },
    };
}
