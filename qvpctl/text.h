// Bytes of a datagram as text, and text made fit for a terminal.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

// Texts are taken as UTF-8, whatever the user's locale. To be called once, before anything is printed.
void useUtf8();

// A text field: up to its NUL or, when it has none, the whole field. The bytes are not checked.
std::string fieldText(std::span<const uint8_t> field);

std::string macText(Mac mac);           // "02:00:5e:10:00:01"
std::string addressText(Ipv4 address);  // "192.0.2.10"

// "YYYYMMDDhhmmss" as "YYYY-MM-DDThh:mm:ss"; nothing when it is no date.
std::optional<std::string> isoTime(std::string_view digits);

// Printable UTF-8 as it stands; control characters, characters that hide or reorder text, and bytes that are not UTF-8
// as \xHH or \u{HHHH}; a backslash doubled, so that no two texts look alike.
std::string printable(std::string_view text);

// Terminal columns that printable text takes.
size_t displayWidth(std::string_view text);
