// Datagrams as people read them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "qvpctl/output.h"

// The bytes, sixteen a line with offset and letters, and the header's fields.
std::string dumpText(std::span<const uint8_t> bytes);

// The same for programs: "hex" holds every byte; "header" is null for what is too short for one.
Record dumpRecord(std::span<const uint8_t> bytes);

// Pairs of hexadecimal digits, with blanks, colons or nothing between them. Throws Error BadValue.
std::vector<uint8_t> parseHex(const std::string& text);
