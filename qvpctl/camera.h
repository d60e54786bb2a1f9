// What a camera says of itself in its discovery reply.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "protocol/discovery.h"
#include "qvpctl/output.h"

struct Camera {
    Mac mac;
    Ipv4 address;
    std::string name;
    std::string brand;
    std::string product;
    std::string model;
    std::string firmware;
    std::string hardware;  // empty in the landap family
    uint16_t httpPort;
    Ipv4 netmask;
    Ipv4 gateway;
    std::vector<Ipv4> dns;  // those that are set
    bool dhcp;
    std::optional<std::string> localTime;  // ISO 8601 without a zone; none when the camera's text is no date
    uint16_t timezone;
    bool daylightSaving;
    std::string interface;  // of this machine, where the reply came in
};

// Nothing when the datagram has not the length of the family's reply, or is no success. That it answers the request is
// for the caller to see.
std::optional<Camera> decodeCamera(uint16_t protocol, std::span<const uint8_t> datagram);

// The address of the web page; none for a camera without address or port.
std::optional<std::string> webUrl(const Camera& camera);

Record recordOf(const Camera& camera);
