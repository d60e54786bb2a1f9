// The changes of single cameras: what is under way, and what came of the last ones.
#pragma once

#include <list>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "client/error.h"
#include "client/session/session.h"
#include "qvpctl/output.h"

enum class ChangeKind { Settings, Password, Reboot, FactoryReset };

class ChangeList {
public:
    using Time = client::SteadyClock::time_point;

    // The number of a new one. Nothing while something else is done with that camera.
    std::optional<std::string> begin(const std::string& mac, ChangeKind kind);

    // What it does now, or how it ended.
    Record step(const std::string& id, const client::Progress& progress, Time now);
    Record away(const std::string& id, const std::string& what, std::chrono::seconds patience, Time now);
    Record end(const std::string& id, const std::optional<client::Error>& error, Time now);

    // The camera is somebody's alone meanwhile; false: it is already.
    bool hold(const std::string& mac) { return busy_.insert(mac).second; }
    void release(const std::string& mac) { busy_.erase(mac); }

    Record record(const std::string& id, Time now) const;
    Record records(Time now) const;

private:
    struct Change {
        std::string id, mac;
        ChangeKind kind;
        const char* stage = "waiting";
        std::string what;
        std::optional<Time> back;  // when it is expected
        std::optional<client::Error> error;
        bool isOver = false;
    };

    Change& find(const std::string& id);
    static Record recordOf(const Change& change, Time now);
    void forgetOld();

    std::list<Change> changes_;
    std::set<std::string> busy_;
    uint64_t last_ = 0;
};
