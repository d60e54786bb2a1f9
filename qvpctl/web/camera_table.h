// The cameras that were heard, and which of them there is news of.
#pragma once

#include <chrono>
#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "client/search.h"
#include "qvpctl/output.h"

class CameraTable {
public:
    using Time = client::SteadyClock::time_point;

    // Whatever a network full of strangers says.
    static constexpr size_t kMost = 10000;

    // A camera answered, or was heard. True when it has to be asked who it is.
    bool take(const client::Found& found, Time now, time_t clock);

    // A search is over: those that are not among these did not answer it.
    void endSearch(const std::vector<client::Found>& answered, Time now);

    // The records of cameras that changed, each at most every quarter of a second, and not too many at once.
    std::vector<Record> news(Time now);

    // True when one has been silent for so long that only a search can tell whether it is there.
    bool isDoubtful(Time now) const;

    std::optional<client::Found> find(const std::string& mac) const;
    std::vector<client::Found> present(Time now) const;  // those that are not silent
    Record records(Time now) const;

private:
    struct Entry {
        client::Found found{};
        Time seen{};
        time_t seenClock = 0;
        bool hasMissed = false;  // the last search was over without an answer of it
        bool isAsked = false;    // of those that were only heard: a search was over since
        bool isSilent = false;   // as it was told last
        std::optional<Time> told;
        std::string toldText;  // the record without its time
        time_t toldClock = 0;
    };

    Entry* entryFor(const std::string& mac, bool answered);
    std::map<std::string, Entry>::iterator remove(std::map<std::string, Entry>::iterator camera);
    void move(const std::string& mac, Ipv4 from, Ipv4 to);
    bool sharesAddress(const Entry& entry) const;
    Record recordOf(const Entry& entry, Time now) const;
    static bool isSilent(const Entry& entry, Time now);
    bool tell(Entry& entry, Time now, std::vector<Record>& records) const;

    std::map<std::string, Entry> cameras_;
    std::map<std::string, std::set<std::string>> holders_;  // of each address
    std::set<std::string> changed_;
    std::string turn_;  // who was looked at last, so that a few noisy ones do not keep the others waiting
};
