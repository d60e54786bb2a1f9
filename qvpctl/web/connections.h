// The connections that have not asked for anything yet, or are slow at it: of too many, the oldest is closed, so that
// there is always room for one that asks.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>

class IdleConnections {
public:
    static constexpr size_t kMost = 128;

    // A connection has begun, or its request was answered.
    void begin(int socket);

    // Its request was read, or it has ended.
    void end(int socket);

    // Closes those that take longer than anybody needs.
    void tick();

private:
    using Clock = std::chrono::steady_clock;

    std::mutex mutex_;
    std::map<int, Clock::time_point> since_;
};
