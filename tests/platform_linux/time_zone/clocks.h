// Local times as programs and this process show them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

int64_t utc(const std::string& text);  // "2026-03-29 01:00:00"

// Local times as "2026-03-29 03:00:00 +0200 CEST", one a moment.
std::vector<std::string> shownBy(const std::string& command, const std::vector<int64_t>& moments);
std::vector<std::string> shownByDate(const std::string& tz, const std::vector<int64_t>& moments);
std::string shownHere(int64_t moment);  // by this process
