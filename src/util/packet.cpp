#include "util/packet.h"

#include "camera/device.h"
#include "platform.h"

Ipv4 interfaceAddress() {
    Ipv4 address = {};
    net_get_ifaddr(g_szInterfaceName, address.bytes);
    return address;
}

void fillReplyHeader(const PacketHeader& request, uint8_t* reply, int replyLength) {
    PacketHeader& header = view<PacketHeader>(reply);
    memcpy(header.magic, kReplyMagic, sizeof header.magic);
    header.sequence = request.sequence;
    header.opcode = request.opcode;
    memcpy(header.mac.bytes, g_uDeviceMac, sizeof header.mac);
    header.address = interfaceAddress();
    header.status = le16(kDone);
    header.protocol = request.protocol;
    header.payload_length = le16(static_cast<uint32_t>(replyLength) - static_cast<uint32_t>(sizeof header));
}

void setStatus(uint8_t* reply, uint16_t status) { view<PacketHeader>(reply).status = le16(status); }

void refuse(uint8_t* reply, uint32_t resultCode) {
    setStatus(reply, kRefused);
    view<SettingReply>(reply).result = le32(resultCode);
}

void acceptChange(uint8_t* reply, uint32_t milliseconds) {
    SettingReply& answer = view<SettingReply>(reply);
    answer.result = le32(0);
    answer.wait_kind = le32(2);
    answer.milliseconds = le32(milliseconds);
}

void takeLongText(char (&text)[kTextSize], const uint8_t* request, const uint8_t* from) {
    size_t left = kDatagramSize - static_cast<size_t>(from - request);
    size_t most = left < sizeof text - 1 ? left : sizeof text - 1;
    size_t length = strnlen(reinterpret_cast<const char*>(from), most);
    memset(text, 0, sizeof text);
    memcpy(text, from, length);
}
