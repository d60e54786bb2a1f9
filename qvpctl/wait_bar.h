// A bar on the terminal while a camera is away.
#pragma once

#include <optional>

#include "client/link.h"

// Passes everything on to the link it stands before. While the bar is shown, it is drawn anew as long as the link is
// waited at; where standard error is no terminal, nothing is drawn.
class WaitBar : public client::Link {
public:
    explicit WaitBar(client::Link& link);
    ~WaitBar() override;

    void show(std::chrono::seconds expected);
    void hide();

    [[nodiscard]] int send(Ipv4 address, std::span<const uint8_t> bytes) override;
    [[nodiscard]] int broadcast(const client::Interface& interface, std::span<const uint8_t> bytes) override;
    std::optional<client::Incoming> receiveUntil(client::SteadyClock::time_point deadline) override;
    client::SteadyClock::time_point now() const override { return link_.now(); }

private:
    void draw() const;

    client::Link& link_;
    bool isTerminal_;
    std::optional<client::SteadyClock::time_point> start_;
    std::chrono::seconds expected_{0};
};

// "[##########..........]  5 s of 10 s"; never full before the end, which nobody knows.
std::string barText(std::chrono::milliseconds passed, std::chrono::seconds expected);
