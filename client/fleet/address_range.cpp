#include "client/fleet/address_range.h"

#include <charconv>
#include <optional>
#include <string_view>

#include "client/error.h"
#include "client/text.h"

namespace client {

uint32_t numberOf(Ipv4 address) {
    uint32_t number = 0;
    for (const uint8_t byte : address.bytes) number = number << 8 | byte;
    return number;
}

static Ipv4 addressOf(uint32_t number) {
    Ipv4 address{};
    for (int i = 3; i >= 0; i--, number >>= 8) address.bytes[i] = static_cast<uint8_t>(number);
    return address;
}

static Error badRange(const std::string& what) { return Error(ErrorKind::BadValue, what); }

static std::optional<uint32_t> decimal(std::string_view text) {
    uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return number;
}

// The end of a range is an address, or the last number of one.
static std::optional<uint32_t> endOf(std::string_view text, uint32_t first) {
    if (const auto address = parseAddress(text)) return numberOf(*address);
    const auto number = decimal(text);
    return number && *number < 256 ? std::optional((first & 0xFFFFFF00) | *number) : std::nullopt;
}

AddressRange parseAddressRange(const std::string& text) {
    const size_t slash = text.find('/');
    if (slash == text.npos) throw badRange("needs the length of its network's prefix, such as " + text + "/24");
    const std::string addresses = text.substr(0, slash);
    const size_t dash = addresses.find('-');
    const auto first = parseAddress(addresses.substr(0, dash));
    const auto length = decimal(text.substr(slash + 1));
    const auto last = !first              ? std::nullopt
                      : dash == text.npos ? std::optional(numberOf(*first))
                                          : endOf(addresses.substr(dash + 1), numberOf(*first));
    if (!first || !last || !length || *length < 1 || *length > 30) {
        throw badRange("must be a range of addresses such as 192.168.10.20-69/24, or a single one");
    }
    const AddressRange range{numberOf(*first), *last, static_cast<int>(*length)};
    if (range.last < range.first) throw badRange("ends before it begins");
    const Ipv4 mask = maskOf(range.prefixLength), end = addressOf(range.last);
    if (!isSameNetwork(*first, end, mask)) throw badRange("reaches out of its network");
    if (!isHostAddress(*first, range.prefixLength) || !isHostAddress(end, range.prefixLength)) {
        throw badRange("begins or ends with what is not the address of a host");
    }
    return range;
}

std::string AddressRange::text() const {
    const std::string start = addressText(addressOf(first)), end = addressText(addressOf(last));
    const bool isNear = first >> 8 == last >> 8;
    const std::string shown = isNear ? std::to_string(last & 0xFF) : end;
    return start + (first == last ? "" : "-" + shown) + "/" + std::to_string(prefixLength);
}

std::string AddressRange::textOf(uint32_t address) const {
    return addressText(addressOf(address)) + "/" + std::to_string(prefixLength);
}

}  // namespace client
