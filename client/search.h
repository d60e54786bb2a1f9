// Finding the cameras on the local networks.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "client/camera.h"
#include "client/link.h"
#include "client/presence.h"

namespace client {

struct Search {
    std::vector<Interface> interfaces;
    Family family = Family::Primary;
    std::chrono::milliseconds wait{2000};                       // how long replies and reports are taken
    size_t expected = 0;                                        // end as soon as that many were found; 0: never
    std::function<bool(const struct Found&)> isLast = nullptr;  // end as soon as such a camera was found; null: never
    int rounds = 3;  // how often is asked in that time: broadcasts are not acknowledged, and many links lose some
    std::optional<Mac> only = std::nullopt;  // ask this camera alone; every other one is spared the answer
};

// A camera as it was found.
struct Found {
    Camera camera;
    Interface interface;  // of this machine, where it was heard
    bool answered;        // false: only its presence report came, so that much is not known
    bool isNear;          // its address is of a subnet of this machine
    bool sharesAddress;   // another camera has the same
    bool sharesMac;       // the same MAC was heard from another address
    bool isElsewhere;     // it was heard from another address than it claims
};

// What a presence report says of its camera; nothing for any other datagram, and for one of another interface.
std::optional<Found> heardFrom(const Incoming& incoming, std::span<const Interface> interfaces);

class Finder {
public:
    // `warn` is told what goes wrong without being the end, in a sentence.
    Finder(Link& link, Search search, std::function<void(const std::string&)> warn);

    // Searches until the time is up, as many as expected were found, or the link was stopped. Throws Error Local when
    // no request could be sent. `found` is handed each camera once, as it answers, with what it shares with those
    // before it; those that were only heard come at the end.
    void run(const std::function<void(const Found&)>& found);

    // All of them, in the order in which they were heard, with what they share.
    std::vector<Found> all() const;

private:
    void sendRound(bool isFirst);
    void take(const Incoming& incoming, const std::function<void(const Found&)>& found);
    void add(Found camera, const std::function<void(const Found&)>& found);
    bool isEnough() const;
    Found withShares(Found one) const;

    Link& link_;
    Search search_;
    std::function<void(const std::string&)> warn_;
    PacketHeader request_;
    std::vector<Found> found_;
};

}  // namespace client
