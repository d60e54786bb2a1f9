#include "datagrams.h"

#include <algorithm>

void put(Bytes& datagram, size_t offset, const Bytes& bytes) {
    std::copy(bytes.begin(), bytes.end(), datagram.begin() + static_cast<std::ptrdiff_t>(offset));
}

void putText(Bytes& datagram, size_t offset, const std::string& text) {
    put(datagram, offset, Bytes(text.begin(), text.end()));
}

static void putDiscovery(Bytes& reply) {
    put(reply, 0, {0xEE, 0xFE, 0x34, 0x12, 0xA1, 0x00, 0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF, 192, 0, 2, 10, 0, 0});
    putText(reply, 22, "Brand");
    putText(reply, 86, "Product");
    putText(reply, 150, "Model");
    putText(reply, 182, "1.05");
    put(reply, 215, {0, 1});
    put(reply, 220, {0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF});
    putText(reply, 226, "Front door");
    put(reply, 290, {192, 0, 2, 10, 0x1F, 0x90, 0, 0});
    put(reply, 298, {255, 255, 255, 0, 192, 0, 2, 1, 192, 0, 2, 53, 198, 51, 100, 53});
    put(reply, 314, {1});
    putText(reply, 315, "20260131235958");
    put(reply, 331, {0x2C, 0x01, 1});
}

Bytes discoveryReply() {
    Bytes reply(505);
    putDiscovery(reply);
    put(reply, 18, {2, 0, 0xE3, 0x01});
    put(reply, 214, {3});
    putText(reply, 366, "Rev B");
    return reply;
}

Bytes landapDiscoveryReply() {
    Bytes reply(334);
    putDiscovery(reply);
    put(reply, 18, {1, 0, 0x38, 0x01});
    put(reply, 214, {1});
    return reply;
}

Bytes presenceReport() {
    Bytes report(317);
    put(report, 0,
        {0xFF, 0xFF, 7, 0, 0xA0, 0x00, 0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF, 192, 0, 2, 10, 0, 0, 2, 0, 0x27, 0x01});
    putText(report, 22, "Product");
    putText(report, 86, "3");
    putText(report, 118, "1.05");
    put(report, 150, {0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF});
    putText(report, 156, "Rev B");
    putText(report, 220, "Front door");
    put(report, 284, {192, 0, 2, 10, 255, 255, 255, 0});
    return report;
}

Bytes replyTo(uint16_t opcode, size_t length, uint8_t status) {
    Bytes reply(length);
    put(reply, 0, {0xEE, 0xFE, 0x34, 0x12, static_cast<uint8_t>(opcode), static_cast<uint8_t>(opcode >> 8)});
    put(reply, 6, {0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF, 192, 0, 2, 10, status, 0, 2, 0});
    put(reply, 20, {static_cast<uint8_t>(length - 22), static_cast<uint8_t>((length - 22) >> 8)});
    return reply;
}

Bytes protectedBytes(size_t length) {
    Bytes request(length);
    putText(request, 22, "YWRtaW4=");
    putText(request, 86, "c2VjcmV0");
    return request;
}
