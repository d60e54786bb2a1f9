// Lists of networks as the driver writes them, and the pages made of them.
#pragma once

#include <string>
#include <vector>

#include "support/handler_test.h"

namespace unit {

// One network's columns; each is padded with blanks to its width, 4, 33, 20, 23, 10, 8 and 2, and cut there.
struct Site {
    std::string channel = "6", ssid = "garden", security = "WPA2PSK/AES", signal = "81", type = "In";
    std::string bssid = "02:00:5e:00:53:01", mode = "11b/g/n";
};

// The line of a network, 100 columns and a newline.
std::string siteLine(const Site& site = {});

// The line in front of the networks.
std::string heading();

// The heading and that many networks, named "net 0", "net 1" and so on.
std::string networks(int count);

// An entry of a page: name, then bytes 33 to 35.
Bytes entry(const std::string& ssid, std::uint8_t signal, std::uint8_t typeAndCipher, std::uint8_t authAndChannel);

// The entry of the nth of `networks`, and of a line without a network.
Bytes networkEntry(int index);
Bytes paddingEntry();

class SiteSurveyTest : public BothFamilies {
protected:
    const CommandRow& check() const { return row("checkSiteSurveyRequest"); }

    // Fills a page from exactly these bytes.
    Outcome fill(const std::string& sites, int page = 0) const;

    // The same from a buffer of the daemon's size, NUL behind the text.
    Outcome fillPadded(const std::string& sites, int page = 0) const;

    // A page with these entries, one behind the other, and the mark of more to come.
    Packet page(const std::vector<Bytes>& entries, bool continued) const;

    // The page that lines fill in a buffer of the daemon's size: padding entries behind these, and more to come.
    Packet paddedPage(std::vector<Bytes> entries) const;

    using Fill = int (*)(const std::uint8_t*, std::uint8_t*, int, int, const char*, int);
    Fill fillFunction() const;
};

}  // namespace unit
