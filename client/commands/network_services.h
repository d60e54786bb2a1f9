// PPPoE, UPnP and dynamic DNS.
#pragma once

#include <optional>
#include <string>

#include "client/login.h"

namespace client {

struct NetworkServices {
    bool upnp;
    bool pppoe;
    std::string pppoeUser;
    std::string ddnsUser;
    Secret ddnsPassword;
    std::string ddnsHost;
    std::string provider;  // host name of the one provider
};

struct DynamicDns {
    std::string user;
    Secret password;
    std::string host;
};

// What is not there is left as it is in the camera.
struct NetworkServicesChange {
    std::optional<bool> upnp;
    std::optional<DynamicDns> ddns;  // dynamic DNS is then switched on or off with the value of `upnp`: off without one
};

constexpr size_t kLongestDdnsText = 63;

NetworkServices decodeNetworkServices(std::span<const uint8_t> reply);
std::vector<uint8_t> encodeNetworkServices(const Login& login, const NetworkServicesChange& change);

}  // namespace client
