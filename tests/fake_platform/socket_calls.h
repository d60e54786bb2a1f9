// The scripted network's two halves: the wait says that something has come, recvfrom hands it over.
#pragma once

#include <cstdint>
#include <vector>

namespace fake {

struct Arrival {
    std::vector<std::uint8_t> bytes;
    std::uint16_t port = 0;  // of the sender, 192.168.0.100
    int error = 0;           // what recvfrom fails with instead
};

// What the last wait brought; empty the second time.
Arrival takeArrival();

void forgetSocket();

}  // namespace fake
