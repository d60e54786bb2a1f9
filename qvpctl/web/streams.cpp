#include "qvpctl/web/streams.h"

#include <poll.h>

#include <algorithm>
#include <cstring>

using client::SteadyClock;

static constexpr std::chrono::seconds kHeartbeat(15);
static constexpr size_t kBatch = size_t{64} * 1024;
static constexpr char kOpening[] = "retry: 1000\n\n";
static constexpr char kBeat[] = ": still here\n\n";

// A browser that went away shows on its socket, while nothing is written to it.
static bool isGone(int socket) {
    pollfd peer{socket, POLLRDHUP, 0};
    return poll(&peer, 1, 0) > 0;
}

MHD_Response* EventStreams::open(MHD_Connection* connection, std::optional<uint64_t> lastEvent) {
    const MHD_ConnectionInfo* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    const std::scoped_lock lock(mutex_);
    const auto living = std::ranges::count_if(streams_, [](const Stream& one) { return !one.isOver; });
    if (static_cast<size_t>(living) >= kMost) return nullptr;
    streams_.push_back({this, connection, info->connect_fd, lastEvent, kOpening, 0, false, false, SteadyClock::now()});
    MHD_Response* answer = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBatch, read, &streams_.back(), free);
    if (answer == nullptr) streams_.pop_back();
    return answer;
}

ssize_t EventStreams::read(void* stream, uint64_t, char* buffer, size_t room) {
    auto& one = *static_cast<Stream*>(stream);
    return one.owner->fill(one, buffer, room);
}

void EventStreams::free(void* stream) {
    auto& one = *static_cast<Stream*>(stream);
    EventStreams& owner = *one.owner;
    const std::scoped_lock lock(owner.mutex_);
    owner.streams_.remove_if([&](const Stream& other) { return &other == &one; });
}

ssize_t EventStreams::fill(Stream& stream, char* buffer, size_t room) {
    const std::scoped_lock lock(mutex_);
    if (isClosed_ || stream.isOver) return MHD_CONTENT_READER_END_OF_STREAM;
    if (stream.sent == stream.pending.size()) {
        stream.pending = state_.eventsAfter(stream.position, kBatch);
        stream.sent = 0;
        const bool isQuiet = SteadyClock::now() - stream.lastWrite >= kHeartbeat;
        if (stream.pending.empty() && isQuiet) stream.pending = kBeat;
    }
    if (stream.pending.empty()) {
        stream.isSuspended = true;
        MHD_suspend_connection(stream.connection);
        return 0;
    }
    const size_t count = std::min(room, stream.pending.size() - stream.sent);
    memcpy(buffer, stream.pending.data() + stream.sent, count);
    stream.sent += count;
    stream.lastWrite = SteadyClock::now();
    return static_cast<ssize_t>(count);
}

void EventStreams::resume(Stream& stream) {
    if (!stream.isSuspended) return;
    stream.isSuspended = false;
    MHD_resume_connection(stream.connection);
}

void EventStreams::wake() {
    const std::scoped_lock lock(mutex_);
    for (Stream& stream : streams_) resume(stream);
}

void EventStreams::tick() {
    const std::scoped_lock lock(mutex_);
    for (Stream& stream : streams_) {
        if (stream.isSuspended) stream.isOver = isGone(stream.socket);
        if (stream.isOver || SteadyClock::now() - stream.lastWrite >= kHeartbeat) resume(stream);
    }
}

void EventStreams::close() {
    const std::scoped_lock lock(mutex_);
    isClosed_ = true;
    for (Stream& stream : streams_) resume(stream);
}
