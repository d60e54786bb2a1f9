#include "client/conversation.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "client/error.h"
#include "client/text.h"

namespace client {

Conversation::Conversation(Link& link, Family family, Target target, Patience patience,
                           std::function<void(const std::string&)> note)
    : link_(link), family_(family), target_(std::move(target)), patience_(patience), note_(std::move(note)) {}

void Conversation::moveTo(Ipv4 address) {
    if (!isSame(address, target_.address)) target_.isShared = false;
    target_.address = address;
}

void Conversation::send(std::span<const uint8_t> request, int attempt) {
    const bool isDirect = attempt == 0 && !target_.isShared && isNear(target_.interface, target_.address);
    const int error = isDirect ? link_.send(target_.address, request) : link_.broadcast(target_.interface, request);
    if (error != 0 && !isDirect) throw localError("interface " + target_.interface.name + ": cannot send", error);
}

void Conversation::noteSender(const Incoming& reply) {
    PacketHeader header;
    memcpy(&header, reply.bytes.data(), sizeof header);
    if (isSame(header.address, reply.sender)) return;
    note_("the reply came from " + addressText(reply.sender) + " but says it is from " + addressText(header.address));
}

std::optional<Reply> Conversation::awaitReply(const PacketHeader& header, size_t replyLength) {
    const auto deadline = link_.now() + patience_.wait;
    while (const auto incoming = link_.receiveUntil(deadline)) {
        if (incoming->bytes.size() != replyLength || !answers(incoming->bytes, header)) continue;
        noteSender(*incoming);
        return incoming->bytes;
    }
    return std::nullopt;
}

std::optional<Reply> Conversation::ask(uint16_t opcode, std::vector<uint8_t> request, size_t replyLength) {
    const PacketHeader header = requestTo(target_.mac, family_, opcode, randomSequence(), request.size());
    memcpy(request.data(), &header, sizeof header);
    for (int attempt = 0; attempt < patience_.tries; attempt++) {
        send(request, attempt);
        if (auto reply = awaitReply(header, replyLength)) return reply;
    }
    return std::nullopt;
}

}  // namespace client
