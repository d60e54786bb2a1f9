// A link whose clock stands until somebody waits, and whose datagrams a test hands over.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "client/link.h"
#include "datagrams.h"

class FakeLink : public client::Link {
public:
    struct Sent {
        std::string to;  // an address, or "all on NAME"
        Bytes bytes;
        std::chrono::milliseconds at;  // since the link was made
    };

    [[nodiscard]] int send(Ipv4 address, std::span<const uint8_t> bytes) override;
    [[nodiscard]] int broadcast(const client::Interface& interface, std::span<const uint8_t> bytes) override;
    std::optional<client::Incoming> receiveUntil(client::SteadyClock::time_point deadline) override;
    client::SteadyClock::time_point now() const override { return now_; }

    // What comes in that much later, from 192.0.2.10 on interface 3 where nothing else is said.
    void arrive(std::chrono::milliseconds later, Bytes bytes, Ipv4 sender = {{192, 0, 2, 10}}, unsigned interface = 3);

    std::chrono::milliseconds elapsed() const;

    std::vector<Sent> sent;
    int sendError = 0;                                             // errno values to fail with
    std::function<int(const std::string&)> broadcastError;         // by the interface's name
    std::function<void(const Sent&)> answer = [](const Sent&) {};  // called with each datagram that went out

private:
    struct Arrival {
        client::SteadyClock::time_point at;
        client::Incoming incoming;
    };

    void note(const std::string& to, std::span<const uint8_t> bytes);

    const client::SteadyClock::time_point start_{};
    client::SteadyClock::time_point now_{};
    std::deque<Arrival> arrivals_;
};

// Interface 3, 192.0.2.1/24.
client::Interface nearInterface();
