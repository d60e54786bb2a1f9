#include "client/commands/network_services.h"

#include "client/text.h"
#include "protocol/network_adv.h"

namespace client {

// The list is one host name behind another, each ended by a ';'.
static std::string firstProvider(const NetworkAdvBlock& block) {
    const std::string list = fieldText(block.provider_list);
    return list.substr(0, list.find(';'));
}

NetworkServices decodeNetworkServices(std::span<const uint8_t> reply) {
    const NetworkAdvBlock block = layoutOf<NetworkAdvReply>(reply).block;
    return {
        .upnp = (block.service_values & kServiceUpnp) != 0,
        .pppoe = (block.service_values & kServicePppoe) != 0,
        .pppoeUser = fieldText(block.pppoe_user),
        .ddnsUser = fieldText(block.ddns_user),
        .ddnsPassword = Secret(fieldText(block.ddns_password)),
        .ddnsHost = fieldText(block.ddns_host),
        .provider = firstProvider(block),
    };
}

std::vector<uint8_t> encodeNetworkServices(const Login& login, const NetworkServicesChange& change) {
    NetworkAdvRequest request{};
    NetworkAdvBlock& block = request.block;
    if (change.upnp) {
        block.service_mask |= kServiceUpnp;
        if (*change.upnp) block.service_values |= kServiceUpnp;
    }
    if (change.ddns) {
        block.service_mask |= kServiceDdns;
        putText(block.ddns_user, change.ddns->user);
        putText(block.ddns_password, change.ddns->password.reveal());
        putText(block.ddns_host, change.ddns->host);
    }
    return protectedRequest(login, request);
}

}  // namespace client
