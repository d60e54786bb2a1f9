// The rows of each group, and what several groups' rows are made with.
#pragma once

#include <ctime>
#include <optional>
#include <span>
#include <string>

#include "client/error.h"
#include "client/settings/setting.h"

namespace client {

std::span<const Setting> basicRows();
std::span<const Setting> servicesRows();
std::span<const Setting> wifiRows();
std::span<const Setting> clockRows();
std::span<const Setting> passwordRows();

inline Error badValue(const std::string& what) { return Error(ErrorKind::BadValue, what); }

inline const char* onOff(bool value) { return value ? "on" : "off"; }
bool parseOnOff(const std::string& text);
inline std::vector<std::string> onOffChoices() { return {"on", "off"}; }

// Throws Error BadValue for a text that is longer than its field, or holds a NUL byte.
void checkLength(const std::string& text, size_t longest);

// Local times as digits "YYYYMMDDhhmmss" and as seconds, to count with; nothing for a time that no calendar has.
std::optional<time_t> momentOf(const std::string& digits);
std::string digitsOfMoment(time_t moment);

// Digits "YYYYMMDDhhmmss" that a camera would take for a time. Throws Error BadValue with the nearest that it takes.
void checkTimeToSet(const std::string& digits);

// A decimal number within bounds. Throws Error BadValue.
unsigned parseNumber(const std::string& text, unsigned lowest, unsigned highest);

}  // namespace client
