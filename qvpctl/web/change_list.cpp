#include "qvpctl/web/change_list.h"

#include <algorithm>

#include "qvpctl/web/message.h"

static constexpr size_t kKept = 64;

static const char* nameOf(ChangeKind kind) {
    switch (kind) {
        case ChangeKind::Settings:
            return "settings";
        case ChangeKind::Password:
            return "password";
        case ChangeKind::Reboot:
            return "reboot";
        case ChangeKind::FactoryReset:
            break;
    }
    return "factory-reset";
}

std::optional<std::string> ChangeList::begin(const std::string& mac, ChangeKind kind) {
    if (!hold(mac)) return std::nullopt;
    forgetOld();
    last_++;
    changes_.push_back({std::to_string(last_), mac, kind, "waiting", "", {}, {}, false});
    return changes_.back().id;
}

void ChangeList::forgetOld() {
    while (changes_.size() >= kKept) {
        const auto old = std::ranges::find_if(changes_, [](const Change& one) { return one.isOver; });
        if (old == changes_.end()) return;
        changes_.erase(old);
    }
}

ChangeList::Change& ChangeList::find(const std::string& id) {
    const auto found = std::ranges::find_if(changes_, [&](const Change& one) { return one.id == id; });
    if (found == changes_.end()) throw client::Error(client::ErrorKind::NotFound, "there is no change " + id);
    return *found;
}

Record ChangeList::step(const std::string& id, const client::Progress& progress, Time now) {
    Change& change = find(id);
    change.what = client::factsOf(progress.group).name;
    change.back.reset();
    switch (progress.step) {
        case client::Progress::Step::Sent:
            change.stage = "sent";
            break;
        case client::Progress::Step::Away:
            change.stage = "away";
            change.back = now + progress.away;
            break;
        case client::Progress::Step::Back:
            change.stage = "back";
            break;
    }
    return recordOf(change, now);
}

Record ChangeList::away(const std::string& id, const std::string& what, std::chrono::seconds patience, Time now) {
    Change& change = find(id);
    change.stage = "away";
    change.what = what;
    change.back = now + patience;
    return recordOf(change, now);
}

Record ChangeList::end(const std::string& id, const std::optional<client::Error>& error, Time now) {
    Change& change = find(id);
    const bool isUnverified = error && error->kind() == client::ErrorKind::Unverified;
    change.stage = !error ? "verified" : isUnverified ? "unverified" : "failed";
    change.error = error;
    change.back.reset();
    change.isOver = true;
    release(change.mac);
    return recordOf(change, now);
}

Record ChangeList::recordOf(const Change& change, Time now) {
    const auto left =
        change.back ? std::chrono::ceil<std::chrono::seconds>(*change.back - now) : std::chrono::seconds(0);
    return {
        {"id",      change.id                     },
        {"mac",     change.mac                    },
        {"kind",    nameOf(change.kind)           },
        {"stage",   change.stage                  },
        {"seconds", std::max<int64_t>(left.count(), 0)},
        {"what",         change.what                                 },
        {"error",         change.error ? errorRecord(*change.error) : Record()},
    };
}

Record ChangeList::record(const std::string& id, Time now) const {
    const auto found = std::ranges::find_if(changes_, [&](const Change& one) { return one.id == id; });
    return found != changes_.end() ? recordOf(*found, now) : Record();
}

Record ChangeList::records(Time now) const {
    Record records = Record::array();
    for (const Change& one : changes_) records.push_back(recordOf(one, now));
    return records;
}
