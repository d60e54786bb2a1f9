// A presence report: what a camera broadcasts unasked.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "protocol/presence_report.h"

namespace client {

struct Presence {
    uint16_t sequence;  // counts the camera's reports
    Mac mac;
    Ipv4 address;
    Ipv4 netmask;
    std::string name;
    std::string product;
    std::string firmware;
    std::string hardware;
};

// Nothing unless the datagram is a presence report, to the byte as long as one is.
std::optional<Presence> decodePresence(std::span<const uint8_t> datagram);

}  // namespace client
