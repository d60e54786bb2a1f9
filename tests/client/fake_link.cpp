#include "fake_link.h"

#include <algorithm>

#include "client/text.h"

using namespace client;

void FakeLink::note(const std::string& to, std::span<const uint8_t> bytes) {
    sent.push_back({to, Bytes(bytes.begin(), bytes.end()), elapsed()});
    answer(Sent(sent.back()));
}

int FakeLink::send(Ipv4 address, std::span<const uint8_t> bytes) {
    if (sendError != 0) return sendError;
    note(addressText(address), bytes);
    return 0;
}

int FakeLink::broadcast(const Interface& interface, std::span<const uint8_t> bytes) {
    const int error = broadcastError ? broadcastError(interface.name) : 0;
    if (error != 0) return error;
    note("all on " + interface.name, bytes);
    return 0;
}

std::optional<Incoming> FakeLink::receiveUntil(SteadyClock::time_point deadline) {
    const bool isThere = !arrivals_.empty() && arrivals_.front().at <= std::max(deadline, now_);
    if (!isThere) {
        now_ = std::max(now_, deadline);
        return std::nullopt;
    }
    const Arrival arrival = arrivals_.front();
    arrivals_.pop_front();
    now_ = std::max(now_, arrival.at);
    return arrival.incoming;
}

void FakeLink::arrive(std::chrono::milliseconds later, Bytes bytes, Ipv4 sender, unsigned interface) {
    const Arrival arrival{now_ + later, {std::move(bytes), sender, interface}};
    const auto place = std::ranges::upper_bound(arrivals_, arrival.at, {}, &Arrival::at);
    arrivals_.insert(place, arrival);
}

std::chrono::milliseconds FakeLink::elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now_ - start_);
}

Interface nearInterface() { return {"eth0", 3, {{{{192, 0, 2, 1}}, {{255, 255, 255, 0}}}}}; }
