// What the tests of the full and of the short wireless commands share: key texts good and bad, the answers,
// the mirror's events.
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

// Calls a handler with a fresh log. Code 0: accepted, with the flag raised; another: refused with that code, nothing
// written and no flag raised.
testing::AssertionResult changes(const CommandRow& row, int code, const Packet& packet);

// Seeds every key of WIRELESS, and the mode of WIRELESS_REP, with values of their own.
void seedWireless();

// The reads and writes that mirror what stands in WIRELESS now; a key that is missing there reads as empty or 0.
fake::Events mirrorEvents();

// The reads and writes of the store behind the credentials' two.
fake::Events workEvents();

}  // namespace unit
