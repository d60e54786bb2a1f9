// A presence report: what a camera broadcasts unasked.
#pragma once

#include <ctime>
#include <optional>
#include <span>
#include <string>

#include "protocol/presence_report.h"
#include "qvpctl/output.h"

struct Presence {
    uint16_t sequence;  // counts the camera's reports
    Mac mac;
    Ipv4 address;
    Ipv4 netmask;
    std::string name;
    std::string product;
    std::string firmware;
    std::string hardware;
    std::string interface;  // of this machine, where it came in
};

// Nothing unless the datagram is a presence report, to the byte as long as one is.
std::optional<Presence> decodePresence(std::span<const uint8_t> datagram);

// `arrival` is shown in local time with its offset.
Record recordOf(const Presence& presence, time_t arrival);
