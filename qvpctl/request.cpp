#include "qvpctl/request.h"

#include <cstring>
#include <random>

uint16_t randomSequence() { return static_cast<uint16_t>(std::random_device()()); }

PacketHeader requestToAll(uint16_t protocol, uint16_t opcode, uint16_t sequence) {
    PacketHeader header{};
    memcpy(header.magic, kRequestMagic, sizeof header.magic);
    header.sequence = le16(sequence);
    header.opcode = le16(opcode);
    memset(header.mac.bytes, 0xFF, sizeof header.mac.bytes);
    header.status = le16(kByMacOrBroadcast);
    header.protocol = le16(protocol);
    return header;
}

std::span<const uint8_t> bytesOf(const PacketHeader& header) {
    return {reinterpret_cast<const uint8_t*>(&header), sizeof header};
}

bool answers(std::span<const uint8_t> datagram, const PacketHeader& request) {
    PacketHeader reply;
    if (datagram.size() < sizeof reply) {
        return false;
    }
    memcpy(&reply, datagram.data(), sizeof reply);
    return memcmp(reply.magic, kReplyMagic, sizeof reply.magic) == 0 &&
           load(reply.sequence) == load(request.sequence) && load(reply.opcode) == load(request.opcode) &&
           load(reply.protocol) == load(request.protocol) &&
           load(reply.payload_length) == datagram.size() - sizeof reply;
}
