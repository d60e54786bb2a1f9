#include "client/commands/basic_info.h"

#include "client/text.h"
#include "protocol/basic_info.h"

namespace client {

std::vector<uint8_t> encodeBasicInfo(const Login& login, const BasicInfo& info) {
    BasicInfoRequest request{};
    putText(std::span(request.name).first<kLongestName>(), info.name);
    request.http_port = le16(info.httpPort);
    request.dhcp = info.dhcp ? 1 : 0;
    request.address = info.address;
    request.mask = info.mask;
    request.gateway = info.gateway;
    request.dns = info.dns;
    request.dns2 = info.dns2;
    return protectedRequest(login, request);
}

}  // namespace client
