#include "client/text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace client {

std::string fieldText(std::span<const uint8_t> field) {
    return std::string(field.begin(), std::find(field.begin(), field.end(), uint8_t{0}));
}

void putText(std::span<uint8_t> field, std::string_view text) {
    std::copy_n(text.begin(), std::min(text.size(), field.size()), field.begin());
}

std::string macText(Mac mac) {
    char text[18];
    const uint8_t* b = mac.bytes;
    snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", b[0], b[1], b[2], b[3], b[4], b[5]);
    return text;
}

std::optional<Mac> parseMac(std::string_view text) {
    constexpr size_t kLength = 17;
    if (text.size() != kLength || (text[2] != ':' && text[2] != '-')) return std::nullopt;
    Mac mac{};
    for (size_t i = 0; i < sizeof mac.bytes; i++) {
        const char* digits = text.data() + 3 * i;
        const bool isSeparated = i == 0 || digits[-1] == text[2];
        if (!isSeparated) return std::nullopt;
        if (std::from_chars(digits, digits + 2, mac.bytes[i], 16).ptr != digits + 2) return std::nullopt;
    }
    return mac;
}

std::string addressText(Ipv4 address) {
    char text[16];
    const uint8_t* b = address.bytes;
    snprintf(text, sizeof text, "%u.%u.%u.%u", b[0], b[1], b[2], b[3]);
    return text;
}

std::optional<Ipv4> parseAddress(std::string_view text) {
    Ipv4 address;
    if (inet_pton(AF_INET, std::string(text).c_str(), address.bytes) != 1) return std::nullopt;
    if (addressText(address) != text) return std::nullopt;
    return address;
}

bool isSet(Ipv4 address) {
    return std::any_of(std::begin(address.bytes), std::end(address.bytes), [](uint8_t octet) { return octet != 0; });
}

bool isSame(Ipv4 one, Ipv4 other) { return std::ranges::equal(one.bytes, other.bytes); }

bool isSame(Mac one, Mac other) { return std::ranges::equal(one.bytes, other.bytes); }

static uint32_t numberOf(Ipv4 address) {
    const uint8_t* b = address.bytes;
    return uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
}

bool isHostAddress(Ipv4 address, int prefixLength) {
    const uint32_t hostBits = ~numberOf(maskOf(prefixLength));
    const uint32_t host = numberOf(address) & hostBits;
    const uint8_t first = address.bytes[0];
    return host != 0 && host != hostBits && first != 0 && first != 127 && first < 224;
}

bool isSameNetwork(Ipv4 one, Ipv4 other, Ipv4 mask) {
    return ((numberOf(one) ^ numberOf(other)) & numberOf(mask)) == 0;
}

std::optional<int> prefixLength(Ipv4 mask) {
    for (int length = 0; length <= 32; length++) {
        if (numberOf(maskOf(length)) == numberOf(mask)) return length;
    }
    return std::nullopt;
}

Ipv4 maskOf(int prefixLength) {
    const uint32_t bits = prefixLength == 0 ? 0 : UINT32_MAX << (32 - prefixLength);
    const Be32 octets = be32(bits);
    return {
        {octets.bytes[0], octets.bytes[1], octets.bytes[2], octets.bytes[3]}
    };
}

std::optional<std::string> isoTime(std::string_view digits) {
    if (digits.size() != 14 || digits.find_first_not_of("0123456789") != digits.npos) return std::nullopt;
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    sscanf(std::string(digits).c_str(), "%4u%2u%2u%2u%2u%2u", &year, &month, &day, &hour, &minute, &second);
    const bool isDate = month >= 1 && month <= 12 && day >= 1 && day <= 31;
    if (!isDate || hour > 23 || minute > 59 || second > 60) return std::nullopt;
    char text[64];
    snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", year, month, day, hour, minute, second);
    return text;
}

std::string base64(std::string_view bytes) {
    static constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const std::string_view group = bytes.substr(i, 3);
        uint32_t bits = 0;
        for (size_t k = 0; k < 3; k++) bits = bits << 8 | (k < group.size() ? static_cast<uint8_t>(group[k]) : 0);
        for (size_t k = 0; k < 4; k++) text += k <= group.size() ? kLetters[bits >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

}  // namespace client
