#include "qvpctl/dump.h"

#include <algorithm>
#include <cstdio>

#include "client/commands/supported.h"
#include "client/error.h"
#include "client/layout.h"
#include "client/text.h"
#include "protocol/packet_header.h"

template <typename... Values>
static std::string format(const char* form, Values... values) {
    char text[128];
    snprintf(text, sizeof text, form, values...);
    return text;
}

static std::string hexText(std::span<const uint8_t> bytes, const char* between) {
    std::string text;
    for (const uint8_t byte : bytes) text += (text.empty() ? "" : between) + format("%02x", byte);
    return text;
}

static std::string letters(std::span<const uint8_t> bytes) {
    std::string text;
    for (const uint8_t byte : bytes) text += byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.';
    return text;
}

static std::string kindOf(const PacketHeader& header) {
    if (std::ranges::equal(header.magic, kRequestMagic)) return "request";
    if (std::ranges::equal(header.magic, kReplyMagic)) return "reply";
    if (std::ranges::equal(header.magic, kPresenceMagic)) return "presence report";
    return "unknown";
}

static std::string statusText(const PacketHeader& header) {
    const uint16_t status = load(header.status);
    if (kindOf(header) == "request") return status == kByMac ? "by MAC" : "by MAC or broadcast";
    if (status == kDone) return "done";
    if (status == kRefused) return "refused";
    return status == kNotLogin ? "wrong user name or password" : "unknown";
}

static Record headerRecord(const PacketHeader& header) {
    const uint16_t opcode = load(header.opcode);
    return {
        {"kind",     kindOf(header)       },
        {"sequence", load(header.sequence)},
        {"opcode",   format("0x%04X",       opcode)},
        {"command",          client::commandName(opcode)                      },
        {"mac",          client::macText(header.mac)    },
        {"address",          client::addressText(header.address)                  },
        {"status",          load(header.status)     },
        {"statusText",          statusText(header)              },
        {"family",          load(header.protocol) == kPrimaryProtocol  ? Record("primary")
                   : load(header.protocol) == kLandapProtocol ? Record("landap")
                                                              : Record()         },
        {"payloadLength",          load(header.payload_length)       },
    };
}

Record dumpRecord(std::span<const uint8_t> bytes) {
    const bool hasHeader = bytes.size() >= sizeof(PacketHeader);
    return {
        {"length",                                                                    bytes.size()},
        {     "header", hasHeader ? headerRecord(client::layoutOf<PacketHeader>(bytes)) : Record()            },
        { "hex",                                                                        hexText(bytes,                                                                                    "")},
    };
}

std::string dumpText(std::span<const uint8_t> bytes) {
    std::string text;
    for (size_t offset = 0; offset < bytes.size(); offset += 16) {
        const auto line = bytes.subspan(offset, std::min<size_t>(16, bytes.size() - offset));
        text += format("  %04zx  %-48s", offset, hexText(line, " ").c_str()) + letters(line) + "\n";
    }
    const Record record = dumpRecord(bytes);
    if (record["header"].is_null()) return text + "  too short for a header\n";
    for (const auto& [key, value] : record["header"].items()) {
        text += format("  %-14s", key.c_str()) + (value.is_string() ? value.get<std::string>() : value.dump()) + "\n";
    }
    return text;
}

static int digitOf(char letter) {
    if (letter >= '0' && letter <= '9') return letter - '0';
    const char lower = static_cast<char>(letter | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::vector<uint8_t> parseHex(const std::string& text) {
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == ' ' || text[i] == ':' || text[i] == '\n') continue;
        const int high = digitOf(text[i]), low = i + 1 < text.size() ? digitOf(text[i + 1]) : -1;
        if (high < 0 || low < 0) {
            throw client::Error(client::ErrorKind::BadValue,
                                "bytes are pairs of hexadecimal digits such as fd fd 00 01");
        }
        bytes.push_back(static_cast<uint8_t>(high << 4 | low));
        i++;
    }
    return bytes;
}
