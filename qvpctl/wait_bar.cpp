#include "qvpctl/wait_bar.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

static constexpr char kEraseLine[] = "\r\033[K";

std::string barText(std::chrono::milliseconds passed, std::chrono::seconds expected) {
    constexpr int64_t kWidth = 20;
    const int64_t whole = std::max<int64_t>(std::chrono::milliseconds(expected).count(), 1);
    const auto full = static_cast<size_t>(std::clamp<int64_t>(passed.count() * kWidth / whole, 0, kWidth - 1));
    return "[" + std::string(full, '#') + std::string(kWidth - full, '.') + "]  " +
           std::to_string(passed.count() / 1000) + " s of up to " + std::to_string(expected.count()) + " s";
}

WaitBar::WaitBar(client::Link& link) : link_(link), isTerminal_(isatty(STDERR_FILENO) != 0) {}

WaitBar::~WaitBar() { hide(); }

void WaitBar::show(std::chrono::seconds expected) {
    start_ = now();
    expected_ = expected;
    draw();
}

void WaitBar::hide() {
    if (start_ && isTerminal_) std::cerr << kEraseLine << std::flush;
    start_.reset();
}

void WaitBar::draw() const {
    if (!start_ || !isTerminal_) return;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(now() - *start_);
    std::cerr << kEraseLine << barText(passed, expected_) << std::flush;
}

int WaitBar::send(Ipv4 address, std::span<const uint8_t> bytes) { return link_.send(address, bytes); }

int WaitBar::broadcast(const client::Interface& interface, std::span<const uint8_t> bytes) {
    return link_.broadcast(interface, bytes);
}

std::optional<client::Incoming> WaitBar::receiveUntil(client::SteadyClock::time_point deadline) {
    while (start_ && isTerminal_ && now() < deadline) {
        draw();
        const auto slice = std::min(deadline, now() + std::chrono::milliseconds(250));
        if (auto incoming = link_.receiveUntil(slice)) return incoming;
    }
    return link_.receiveUntil(deadline);
}
