// What the tests of the full and of the short wireless commands share: key texts good and bad, the mirror's events, the
// answers.
#pragma once

#include <string>
#include <vector>

#include "support/handler_test.h"

namespace unit {

// A WEP key as it stands in a request, and whether it fits the format and length.
struct WepKeyRow {
    std::uint8_t format, length;
    std::string key;
    bool good;
};

const std::vector<WepKeyRow>& wepKeyRows();

struct PreSharedKeyRow {
    std::string key;
    bool good;
};

const std::vector<PreSharedKeyRow>& preSharedKeyRows();

// The reply to an accepted change: words 0, 2 and 5000.
Packet changeAccepted(const CommandRow& row);

// The reply to a change refused with this code.
Packet changeRefused(const CommandRow& row, std::uint8_t code);

// Seeds every key of WIRELESS, and the mode of WIRELESS_REP, with values of their own.
void seedWireless();

// The reads and writes that mirror what stands in WIRELESS now; a key that is missing there reads as empty or 0.
fake::Events mirrorEvents();

// The reads and writes of the store behind the credentials' two.
fake::Events workEvents();

}  // namespace unit
