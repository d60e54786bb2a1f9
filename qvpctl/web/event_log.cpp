#include "qvpctl/web/event_log.h"

// The record is one line of ASCII: nothing in it ends the line, or the event.
std::string EventLog::text(uint64_t number, const char* name, const Record& data) {
    return "id: " + std::to_string(number) + "\nevent: " + name + "\ndata: " + jsonLine(data) + "\n";
}

void EventLog::add(const char* name, const Record& data) {
    events_.push_back(text(next_, name, data));
    bytes_ += events_.back().size();
    next_++;
    while (events_.size() > 1 && (events_.size() > kept_ || bytes_ > mostBytes_)) {
        bytes_ -= events_.front().size();
        events_.pop_front();
    }
}

std::optional<std::string> EventLog::after(uint64_t& number, size_t room) const {
    const uint64_t first = next_ - events_.size();
    if (number + 1 < first || number >= next_) return std::nullopt;
    std::string text;
    while (number + 1 < next_) {
        const std::string& event = events_[number + 1 - first];
        if (!text.empty() && text.size() + event.size() > room) break;
        text += event;
        number++;
    }
    return text;
}
