#include "client/request.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "client/text.h"

namespace client {

uint16_t randomSequence() { return static_cast<uint16_t>(std::random_device()()); }

PacketHeader requestToAll(Family family, uint16_t opcode, uint16_t sequence, size_t length) {
    PacketHeader header{};
    memcpy(header.magic, kRequestMagic, sizeof header.magic);
    header.sequence = le16(sequence);
    header.opcode = le16(opcode);
    memset(header.mac.bytes, 0xFF, sizeof header.mac.bytes);
    header.status = le16(kByMacOrBroadcast);
    header.protocol = le16(static_cast<uint16_t>(family));
    header.payload_length = le16(static_cast<uint32_t>(length - sizeof header));
    return header;
}

PacketHeader requestTo(Mac mac, Family family, uint16_t opcode, uint16_t sequence, size_t length) {
    PacketHeader header = requestToAll(family, opcode, sequence, length);
    header.mac = mac;
    header.status = le16(kByMac);
    return header;
}

std::span<const uint8_t> bytesOf(const PacketHeader& header) {
    return {reinterpret_cast<const uint8_t*>(&header), sizeof header};
}

static bool isFrom(const PacketHeader& reply, const PacketHeader& request) {
    return load(request.status) != kByMac || isSame(reply.mac, request.mac);
}

bool answers(std::span<const uint8_t> datagram, const PacketHeader& request) {
    PacketHeader reply;
    if (datagram.size() < sizeof reply) return false;
    memcpy(&reply, datagram.data(), sizeof reply);
    return std::ranges::equal(reply.magic, kReplyMagic) && load(reply.sequence) == load(request.sequence) &&
           load(reply.opcode) == load(request.opcode) && load(reply.protocol) == load(request.protocol) &&
           load(reply.payload_length) == datagram.size() - sizeof reply && isFrom(reply, request);
}

}  // namespace client
