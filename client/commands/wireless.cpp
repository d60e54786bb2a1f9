#include "client/commands/wireless.h"

#include <algorithm>

#include "client/text.h"
#include "protocol/wifi.h"

namespace client {

static uint8_t low(uint8_t byte) { return byte & 0x0F; }
static uint8_t high(uint8_t byte) { return static_cast<uint8_t>(byte >> 4); }
static uint8_t nibbles(uint8_t low, uint8_t high) { return static_cast<uint8_t>(high << 4 | low); }

WifiSettings decodeWifi(std::span<const uint8_t> reply) {
    const WifiBlock block = layoutOf<WifiReply>(reply).block;
    WifiSettings settings{
        .enable = block.enable != 0,
        .channel = block.channel,
        .ssid = fieldText(block.ssid),
        .mode = low(block.mode_encryption),
        .security = {low(block.auth_key_length), high(block.mode_encryption)},
        .wepKeyLength = high(block.auth_key_length),
        .wepKeyFormat = low(block.key_format_active),
        .activeWepKey = high(block.key_format_active),
        .wepKeys = {                          },
        .preSharedKey = Secret(fieldText(block.pre_shared_key)),
    };
    for (size_t i = 0; i < settings.wepKeys.size(); i++) settings.wepKeys[i] = Secret(fieldText(block.wep_key[i]));
    return settings;
}

std::vector<uint8_t> encodeWifi(const Login& login, const WifiSettings& settings) {
    WifiRequest request{};
    WifiBlock& block = request.block;
    block.enable = 1;
    block.channel = settings.channel;
    putText(block.ssid, settings.ssid);
    block.mode_encryption = nibbles(settings.mode, settings.security.encryption);
    block.auth_key_length = nibbles(settings.security.authentication, settings.wepKeyLength);
    block.key_format_active = nibbles(settings.wepKeyFormat, settings.activeWepKey);
    for (size_t i = 0; i < settings.wepKeys.size(); i++) putText(block.wep_key[i], settings.wepKeys[i].reveal());
    putText(block.pre_shared_key, settings.preSharedKey.reveal());
    return protectedRequest(login, request);
}

static bool isHex(std::string_view text) { return text.find_first_not_of("0123456789abcdefABCDEF") == text.npos; }

static bool isPrintable(std::string_view text) {
    return std::ranges::all_of(text, [](unsigned char letter) { return letter >= 32 && letter <= 127; });
}

std::string checkPreSharedKey(const Secret& key) {
    const std::string& text = key.reveal();
    const std::string length = std::to_string(text.size());
    if (text.size() < 8 || text.size() > 64) {
        return "the key has " + length + " bytes; it must have 8 to 63, or 64 hexadecimal digits";
    }
    if (text.size() == 64 && !isHex(text)) return "a key of 64 bytes must be hexadecimal digits";
    if (!isPrintable(text)) return "the key holds a byte that is not printable ASCII";
    return "";
}

std::string checkWepKey(const Secret& key) {
    const std::string& text = key.reveal();
    const bool isText = (text.size() == 5 || text.size() == 13) && isPrintable(text);
    const bool isDigits = (text.size() == 10 || text.size() == 26) && isHex(text);
    if (isText || isDigits) return "";
    return "the key has " + std::to_string(text.size()) +
           " bytes; a WEP key has 5 or 13 printable characters, or 10 or 26 hexadecimal digits";
}

WepKeyKind kindOfWepKey(const Secret& key) {
    const size_t length = key.reveal().size();
    const bool isLong = length == 13 || length == 26;
    const bool isDigits = length == 10 || length == 26;
    return {static_cast<uint8_t>(isLong ? 1 : 0), static_cast<uint8_t>(isDigits ? 1 : 0)};
}

}  // namespace client
