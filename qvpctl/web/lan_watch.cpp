#include "qvpctl/web/lan_watch.h"

#include <algorithm>
#include <utility>

#include "qvpctl/tool.h"

using client::Error;
using client::Found;
using client::Incoming;
using client::SteadyClock;

static constexpr std::chrono::milliseconds kTick(250);
static constexpr std::chrono::seconds kBetweenSearches(5);  // of those that cameras cause

namespace {

// Shows all that comes in to somebody else, too, who is not kept waiting for longer than a tick.
class Tap : public client::Link {
public:
    using Look = std::function<void(const Incoming*)>;

    Tap(client::UdpLink& link, Look look) : link_(link), look_(std::move(look)) {}

    int send(Ipv4 address, std::span<const uint8_t> bytes) override { return link_.send(address, bytes); }
    int broadcast(const client::Interface& interface, std::span<const uint8_t> bytes) override {
        return link_.broadcast(interface, bytes);
    }
    SteadyClock::time_point now() const override { return link_.now(); }

    std::optional<Incoming> receiveUntil(SteadyClock::time_point deadline) override {
        while (!link_.isStopped()) {
            auto incoming = link_.receiveUntil(std::min(deadline, now() + kTick));
            look_(incoming ? &*incoming : nullptr);
            if (incoming || now() >= deadline) return incoming;
        }
        return std::nullopt;
    }

private:
    client::UdpLink& link_;
    Look look_;
};

}  // namespace

LanWatch::LanWatch(WebState& state, const CommonOptions& common, int stop, std::function<void()> tick)
    : state_(state), common_(common), stop_(stop), tick_(std::move(tick)), thread_([this] { run(); }) {}

client::UdpLink LanWatch::open() try {
    return client::UdpLink(client::UdpLink::Hears::RepliesAndReports, stop_);
} catch (const Error& error) {
    reportsWarning_ = std::string("presence reports are not heard: ") + error.what();
    return client::UdpLink(client::UdpLink::Hears::Replies, stop_);
}

// Interfaces come and go; nobody needs to know at once.
void LanWatch::refreshInterfaces() {
    if (!interfaces_.empty() && SteadyClock::now() - refreshed_ < kBetweenSearches) return;
    refreshed_ = SteadyClock::now();
    interfaces_.clear();
    try {
        interfaces_ = chosenInterfaces(common_);
    } catch (const Error&) {
        return;  // the next search says so
    }
}

void LanWatch::run() try {
    client::UdpLink network = open();
    auto ticked = SteadyClock::now();
    Tap link(network, [&](const Incoming* incoming) {
        const auto heard = incoming != nullptr ? client::heardFrom(*incoming, interfaces_) : std::nullopt;
        if (heard) isAskedFor_ |= state_.take(*heard);
        if (SteadyClock::now() - ticked < kTick) return;
        ticked = SteadyClock::now();
        state_.tick();
        tick_();
    });
    while (!network.isStopped()) {
        refreshInterfaces();
        const bool isTime = SteadyClock::now() - searched_ >= kBetweenSearches;
        if (state_.takeSearchWish() || (isTime && (isAskedFor_ || state_.isDoubtful()))) search(link);
        link.receiveUntil(link.now() + kTick);
    }
} catch (const std::exception& error) {
    state_.notice(std::string("the network is no longer listened to: ") + error.what());
}

void LanWatch::tellSearch(bool isRunning, size_t found) {
    Record names = Record::array();
    for (const client::Interface& interface : interfaces_) names.push_back(interface.name);
    state_.tellSearch({
        {"running",    isRunning},
        {"interfaces", names    },
        {"found",      found    },
        {"warnings",   warnings_}
    });
}

void LanWatch::search(client::Link& link) try {
    isAskedFor_ = false;
    searched_ = refreshed_ = SteadyClock::now();
    warnings_ = Record::array();
    if (!reportsWarning_.empty()) warnings_.push_back(reportsWarning_);
    interfaces_.clear();
    interfaces_ = chosenInterfaces(common_);
    tellSearch(true, 0);
    client::Search search{interfaces_, common_.family, common_.wait()};
    search.rounds = static_cast<int>(common_.retries) + 1;
    client::Finder finder(link, search, [&](const std::string& sentence) { warnings_.push_back(sentence); });
    finder.run([&](const Found& found) {
        if (found.answered) state_.take(found);
    });
    const std::vector<Found> all = finder.all();
    state_.endSearch(all);
    tellSearch(false, static_cast<size_t>(std::ranges::count_if(all, &Found::answered)));
} catch (const Error& error) {
    warnings_.push_back(error.what());
    tellSearch(false, 0);
}
