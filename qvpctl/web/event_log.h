// What happened, for those who look on: each event has a number, and the last of them are kept for who comes back.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "qvpctl/output.h"

class EventLog {
public:
    // The number of the first event; a server that starts itself again goes on behind its own.
    explicit EventLog(uint64_t first, size_t kept = 4096, size_t bytes = 8 * 1024 * 1024)
        : next_(first), kept_(kept), mostBytes_(bytes) {}

    void add(const char* name, const Record& data);

    // The number of the last one, for who has just seen the whole.
    uint64_t last() const { return next_ - 1; }

    // Those behind that number as text/event-stream, as many as fit, and moves the number there; at least one, if there
    // is one. Nothing when some of them are lost, or the number is none of here.
    std::optional<std::string> after(uint64_t& number, size_t room) const;

    // One that is for a single stream, with that number.
    static std::string text(uint64_t number, const char* name, const Record& data);

private:
    std::deque<std::string> events_;
    uint64_t next_;
    size_t kept_, mostBytes_;
    size_t bytes_ = 0;
};
