// Fields of datagrams and values of users as text, and back.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

namespace client {

// A text field: up to its NUL or, when it has none, the whole field. The bytes are not checked.
std::string fieldText(std::span<const uint8_t> field);

// Copies a text into a zeroed field; it must fit (a text as long as the field leaves no NUL).
void putText(std::span<uint8_t> field, std::string_view text);

std::string macText(Mac mac);                        // "02:00:5e:10:00:01"
std::optional<Mac> parseMac(std::string_view text);  // that form, or with '-', in either case

std::string addressText(Ipv4 address);                    // "192.0.2.10"
std::optional<Ipv4> parseAddress(std::string_view text);  // four decimal numbers without leading zeros

bool isSet(Ipv4 address);  // not 0.0.0.0
bool isSame(Ipv4 one, Ipv4 other);
bool isSame(Mac one, Mac other);

// Neither the network's own address nor its broadcast, nor one of a network that hosts have no addresses in.
bool isHostAddress(Ipv4 address, int prefixLength);

bool isSameNetwork(Ipv4 one, Ipv4 other, Ipv4 mask);

// Prefix length of a mask, and the mask of a length from 0 to 32; nothing for a mask with a hole.
std::optional<int> prefixLength(Ipv4 mask);
Ipv4 maskOf(int prefixLength);

// "YYYYMMDDhhmmss" as "YYYY-MM-DDThh:mm:ss"; nothing when it is no date.
std::optional<std::string> isoTime(std::string_view digits);

// Base64 of any bytes, padded.
std::string base64(std::string_view bytes);

}  // namespace client
