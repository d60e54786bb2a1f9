// Waiting for a camera that is away: a bar on the terminal, and an end when the user wants one.
#pragma once

#include <optional>

#include "client/udp_link.h"
#include "qvpctl/options.h"

// Passes everything on to the link it stands before. While the bar is shown, it is drawn anew as long as the link is
// waited at, on a terminal that can; not between lines of JSON. Throws Error Unverified when the link was stopped.
class WaitBar : public client::Link {
public:
    WaitBar(client::UdpLink& link, const CommonOptions& options);
    ~WaitBar() override;

    void show(std::chrono::seconds expected);
    void hide();

    [[nodiscard]] int send(Ipv4 address, std::span<const uint8_t> bytes) override;
    [[nodiscard]] int broadcast(const client::Interface& interface, std::span<const uint8_t> bytes) override;
    std::optional<client::Incoming> receiveUntil(client::SteadyClock::time_point deadline) override;
    client::SteadyClock::time_point now() const override { return link_.now(); }

private:
    void draw() const;
    std::optional<client::Incoming> receiveUnlessStopped(client::SteadyClock::time_point deadline);

    client::UdpLink& link_;
    bool isDrawn_;
    std::optional<client::SteadyClock::time_point> start_;
    std::chrono::seconds expected_{0};
};

// "[##########..........]  5 s of 10 s"; never full before the end, which nobody knows.
std::string barText(std::chrono::milliseconds passed, std::chrono::seconds expected);
