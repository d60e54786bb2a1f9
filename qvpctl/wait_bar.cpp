#include "qvpctl/wait_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "client/error.h"

static constexpr char kEraseLine[] = "\r\033[K";

std::string barText(std::chrono::milliseconds passed, std::chrono::seconds expected) {
    constexpr int64_t kWidth = 20;
    const int64_t whole = std::max<int64_t>(std::chrono::milliseconds(expected).count(), 1);
    const auto full = static_cast<size_t>(std::clamp<int64_t>(passed.count() * kWidth / whole, 0, kWidth - 1));
    return "[" + std::string(full, '#') + std::string(kWidth - full, '.') + "]  " +
           std::to_string(passed.count() / 1000) + " s of up to " + std::to_string(expected.count()) + " s";
}

static bool canDraw() {
    const char* terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && terminal != nullptr && strcmp(terminal, "dumb") != 0;
}

// A line that is longer than the terminal would leave a part of it behind.
static std::string cutToTerminal(const std::string& text) {
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? text.substr(0, size.ws_col - 1u) : text;
}

WaitBar::WaitBar(client::UdpLink& link, const CommonOptions& options)
    : link_(link), isDrawn_(!options.json && canDraw()) {}

WaitBar::~WaitBar() { hide(); }

void WaitBar::show(std::chrono::seconds expected) {
    start_ = now();
    expected_ = expected;
    draw();
}

void WaitBar::hide() {
    if (start_ && isDrawn_) std::cerr << kEraseLine << std::flush;
    start_.reset();
}

void WaitBar::draw() const {
    if (!start_ || !isDrawn_) return;
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(now() - *start_);
    std::cerr << kEraseLine << cutToTerminal(barText(passed, expected_)) << std::flush;
}

int WaitBar::send(Ipv4 address, std::span<const uint8_t> bytes) { return link_.send(address, bytes); }

int WaitBar::broadcast(const client::Interface& interface, std::span<const uint8_t> bytes) {
    return link_.broadcast(interface, bytes);
}

std::optional<client::Incoming> WaitBar::receiveUnlessStopped(client::SteadyClock::time_point deadline) {
    auto incoming = link_.receiveUntil(deadline);
    if (!link_.isStopped()) return incoming;
    hide();
    throw client::Error(client::ErrorKind::Unverified,
                        "stopped: what was sent to the camera is not undone, and what was to follow is not sent");
}

std::optional<client::Incoming> WaitBar::receiveUntil(client::SteadyClock::time_point deadline) {
    while (start_ && isDrawn_ && now() < deadline) {
        draw();
        const auto slice = std::min(deadline, now() + std::chrono::milliseconds(250));
        if (auto incoming = receiveUnlessStopped(slice)) return incoming;
    }
    return receiveUnlessStopped(deadline);
}
