#include "client/camera.h"

#include "client/layout.h"
#include "client/text.h"

namespace client {

static Camera cameraOf(const DiscoveryReply& reply) {
    const DiscoveryRecord& common = reply.common;
    Camera camera{};
    camera.mac = common.header.mac;
    camera.address = common.address;
    camera.name = fieldText(common.name);
    camera.brand = fieldText(common.brand);
    camera.product = fieldText(common.product);
    camera.model = fieldText(common.model);
    camera.firmware = fieldText(common.firmware);
    camera.hardware = fieldText(reply.hardware);
    camera.httpPort = load(common.http_port);
    camera.netmask = common.mask;
    camera.gateway = common.gateway;
    for (const Ipv4 server : {common.dns, common.dns2}) {
        if (isSet(server)) camera.dns.push_back(server);
    }
    camera.dhcp = common.dhcp == 1;
    camera.localTime = isoTime(fieldText(common.local_time));
    camera.timezone = load(common.timezone);
    camera.daylightSaving = common.daylight_saving != 0;
    return camera;
}

size_t discoveryLength(Family family) {
    return family == Family::Landap ? sizeof(DiscoveryRecord) : sizeof(DiscoveryReply);
}

std::optional<Camera> decodeCamera(Family family, std::span<const uint8_t> datagram) {
    if (datagram.size() != discoveryLength(family)) return std::nullopt;
    DiscoveryReply reply{};
    memcpy(&reply, datagram.data(), datagram.size());
    if (load(reply.common.header.status) != kDone) return std::nullopt;
    return cameraOf(reply);
}

std::optional<std::string> webUrl(const Camera& camera) {
    if (!isSet(camera.address) || camera.httpPort == 0) return std::nullopt;
    const std::string port = camera.httpPort == 80 ? "" : ":" + std::to_string(camera.httpPort);
    return "http://" + addressText(camera.address) + port + "/";
}

}  // namespace client
