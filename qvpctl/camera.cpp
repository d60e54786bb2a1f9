#include "qvpctl/camera.h"

#include <cstring>

#include "qvpctl/text.h"

static bool isSet(Ipv4 address) { return addressText(address) != "0.0.0.0"; }

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
        if (isSet(server)) {
            camera.dns.push_back(server);
        }
    }
    camera.dhcp = common.dhcp == 1;
    camera.localTime = isoTime(fieldText(common.local_time));
    camera.timezone = load(common.timezone);
    camera.daylightSaving = common.daylight_saving != 0;
    return camera;
}

std::optional<Camera> decodeCamera(uint16_t protocol, std::span<const uint8_t> datagram) {
    DiscoveryReply reply{};
    const size_t length = protocol == kLandapProtocol ? sizeof(DiscoveryRecord) : sizeof(DiscoveryReply);
    if (datagram.size() != length) {
        return std::nullopt;
    }
    memcpy(&reply, datagram.data(), datagram.size());
    if (load(reply.common.header.status) != kDone) {
        return std::nullopt;
    }
    return cameraOf(reply);
}

std::optional<std::string> webUrl(const Camera& camera) {
    if (!isSet(camera.address) || camera.httpPort == 0) {
        return std::nullopt;
    }
    const std::string port = camera.httpPort == 80 ? "" : ":" + std::to_string(camera.httpPort);
    return "http://" + addressText(camera.address) + port + "/";
}

static Record textOrNull(const std::optional<std::string>& text) { return text ? Record(*text) : Record(nullptr); }

Record recordOf(const Camera& camera) {
    Record dns = Record::array();
    for (const Ipv4 server : camera.dns) {
        dns.push_back(addressText(server));
    }
    return {
        {"mac",            macText(camera.mac)         },
        {"address",        addressText(camera.address) },
        {"name",           camera.name                 },
        {"brand",          camera.brand                },
        {"product",        camera.product              },
        {"model",          camera.model                },
        {"firmware",       camera.firmware             },
        {"hardware",       camera.hardware             },
        {"httpPort",       camera.httpPort             },
        {"netmask",        addressText(camera.netmask) },
        {"gateway",        addressText(camera.gateway) },
        {"dns",            dns                         },
        {"dhcp",           camera.dhcp                 },
        {"localTime",      textOrNull(camera.localTime)},
        {"timezone",       camera.timezone             },
        {"daylightSaving", camera.daylightSaving       },
        {"url",            textOrNull(webUrl(camera))  },
        {"interface",      camera.interface            },
    };
}
