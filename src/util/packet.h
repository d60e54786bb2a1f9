// Reading requests and building replies: the header, the text fields.
#pragma once

#include <stddef.h>
#include <string.h>

#include "camera/settings.h"
#include "protocol/packet_header.h"
#include "protocol/setting_reply.h"

// A datagram seen as one of the layouts of protocol/: byte arrays all through, so any address will do.
template <typename Layout>
const Layout& view(const uint8_t* datagram) {
    static_assert(alignof(Layout) == 1);
    return *reinterpret_cast<const Layout*>(datagram);
}

template <typename Layout>
Layout& view(uint8_t* datagram) {
    static_assert(alignof(Layout) == 1 && sizeof(Layout) <= kDatagramSize);
    return *reinterpret_cast<Layout*>(datagram);
}

// Answers `request`: magic, sequence and opcode, device MAC, interface address, status 0, family, payload length.
void fillReplyHeader(const PacketHeader& request, uint8_t* reply, int replyLength);

void setStatus(uint8_t* reply, uint16_t status);

// Status 2 with the reason behind the header.
void refuse(uint8_t* reply, uint32_t resultCode);

// What stands behind the header of an accepted change: how long it takes the device away.
void acceptChange(uint8_t* reply, uint32_t milliseconds);

// Address of the served interface; 0.0.0.0 when it has none.
Ipv4 interfaceAddress();

// Copies text into a field of a reply, up to its NUL or the field's end; no NUL when it fills the field.
template <size_t Size>
void putText(uint8_t (&field)[Size], const char* text, size_t most = Size) {
    size_t length = strnlen(text, most < Size ? most : Size);
    memcpy(field, text, length);
}

// Copies a text field of a request, up to its NUL or the field's end, and clears the rest: what stands behind the NUL
// stays in the request.
template <size_t Room, size_t Size>
void takeText(char (&text)[Room], const uint8_t (&field)[Size]) {
    static_assert(Room > Size);
    memset(text, 0, Room);
    memcpy(text, field, strnlen(reinterpret_cast<const char*>(field), Size));
}

// Copies the text that starts at `from` in a request's 1024-byte buffer: up to its NUL, 255 bytes or the buffer's end,
// past its field if it has no NUL there. The rest is cleared.
void takeLongText(char (&text)[kTextSize], const uint8_t* request, const uint8_t* from);
