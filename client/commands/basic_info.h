// Camera name, web server port and IPv4 addressing: one request sets them all.
#pragma once

#include <string>

#include "client/login.h"

namespace client {

struct BasicInfo {
    std::string name;
    uint16_t httpPort;
    bool dhcp;
    Ipv4 address, mask, gateway, dns, dns2;  // not read by the camera with DHCP
};

constexpr size_t kLongestName = 63;

std::vector<uint8_t> encodeBasicInfo(const Login& login, const BasicInfo& info);

}  // namespace client
