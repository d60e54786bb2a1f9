#include "qvpctl/web/connections.h"

#include <sys/socket.h>

#include <algorithm>

static constexpr std::chrono::seconds kSlowAfter(30);

// The server sees the end of it and does the rest.
static void shut(int socket) { shutdown(socket, SHUT_RDWR); }

void IdleConnections::begin(int socket) {
    const std::scoped_lock lock(mutex_);
    since_[socket] = Clock::now();
    if (since_.size() <= kMost) return;
    const auto oldest = std::ranges::min_element(since_, {}, [](const auto& one) { return one.second; });
    shut(oldest->first);
    since_.erase(oldest);
}

void IdleConnections::end(int socket) {
    const std::scoped_lock lock(mutex_);
    since_.erase(socket);
}

void IdleConnections::tick() {
    const std::scoped_lock lock(mutex_);
    std::erase_if(since_, [](const auto& one) {
        const bool isSlow = Clock::now() - one.second >= kSlowAfter;
        if (isSlow) shut(one.first);
        return isSlow;
    });
}
