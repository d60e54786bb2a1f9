// What a camera says of itself in its discovery reply.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "client/request.h"
#include "protocol/discovery.h"

namespace client {

struct Camera {
    Mac mac{};
    Ipv4 address{};
    std::string name;
    std::string brand;
    std::string product;
    std::string model;
    std::string firmware;
    std::string hardware;  // empty in the landap family
    uint16_t httpPort = 0;
    Ipv4 netmask{};
    Ipv4 gateway{};
    std::vector<Ipv4> dns;  // those that are set
    bool dhcp = false;
    std::optional<std::string> localTime;  // ISO 8601 without a zone; none when the camera's text is no date
    uint16_t timezone = 0;
    bool daylightSaving = false;
};

// Nothing when the datagram has not the length of the family's reply, or is no success. That it answers the request is
// for the caller to see.
std::optional<Camera> decodeCamera(Family family, std::span<const uint8_t> datagram);

// How long that reply is.
size_t discoveryLength(Family family);

// The address of the web page; none for a camera without address or port.
std::optional<std::string> webUrl(const Camera& camera);

}  // namespace client
