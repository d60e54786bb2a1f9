#include "qvpctl/secret_bytes.h"

#include <algorithm>

#include "client/layout.h"
#include "protocol/network_adv.h"
#include "protocol/opcodes.h"
#include "protocol/simple_wifi.h"
#include "protocol/wifi.h"

struct SecretField {
    uint16_t opcode;
    size_t offset, length;
};

static constexpr SecretField kFields[] = {
    {opcode::kGetNetworkAdv, offsetof(NetworkAdvReply, block.ddns_password),  sizeof NetworkAdvBlock::ddns_password},
    {opcode::kGetWifi,       offsetof(WifiReply,       block.wep_key),        sizeof WifiBlock::wep_key            },
    {opcode::kGetWifi,       offsetof(WifiReply,       block.pre_shared_key), sizeof WifiBlock::pre_shared_key     },
    {opcode::kGetSimpleWifi, offsetof(SimpleWifiReply, block.key),            sizeof SimpleWifiBlock::key          },
};

static void blank(std::vector<uint8_t>& bytes, size_t offset, size_t length) {
    const size_t start = std::min(offset, bytes.size());
    const size_t end = std::min(offset + length, bytes.size());
    std::fill(bytes.begin() + static_cast<ptrdiff_t>(start), bytes.begin() + static_cast<ptrdiff_t>(end), uint8_t{0});
}

void blankLogin(std::vector<uint8_t>& request) {
    blank(request, offsetof(ProtectedRequest, credentials), sizeof(Credentials));
}

void blankSecrets(std::vector<uint8_t>& reply) {
    if (reply.size() < sizeof(PacketHeader)) return;
    const uint16_t opcode = load(client::layoutOf<PacketHeader>(reply).opcode);
    for (const SecretField& field : kFields) {
        if (field.opcode == opcode) blank(reply, field.offset, field.length);
    }
}
