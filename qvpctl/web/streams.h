// The open event streams.
#pragma once

#include <microhttpd.h>

#include <list>
#include <mutex>
#include <optional>
#include <string>

#include "qvpctl/web/state.h"

class EventStreams {
public:
    static constexpr size_t kMost = 16;

    explicit EventStreams(WebState& state) : state_(state) {}

    // The answer to a request for one, which begins behind that event; null when there are too many.
    MHD_Response* open(MHD_Connection* connection, std::optional<uint64_t> lastEvent);

    // There are events.
    void wake();

    // To be called every second or so: for the heartbeat, and for those whose browser has gone.
    void tick();

    // Ends all of them, now and later.
    void close();

private:
    struct Stream {
        EventStreams* owner;
        MHD_Connection* connection;
        int socket;
        std::optional<uint64_t> position;
        std::string pending;
        size_t sent = 0;  // of it
        bool isSuspended = false;
        bool isOver = false;
        client::SteadyClock::time_point lastWrite;
    };

    static ssize_t read(void* stream, uint64_t position, char* buffer, size_t room);
    static void free(void* stream);
    ssize_t fill(Stream& stream, char* buffer, size_t room);
    static void resume(Stream& stream);

    WebState& state_;
    std::mutex mutex_;
    std::list<Stream> streams_;
    bool isClosed_ = false;
};
