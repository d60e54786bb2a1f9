#include "qvpctl/web/camera_table.h"

#include <algorithm>

#include "client/text.h"
#include "qvpctl/records.h"

using client::Found;

// Cameras report every 30 seconds; three of them lost are no accident.
static constexpr std::chrono::seconds kSilentAfter(95);
static constexpr std::chrono::milliseconds kTellEvery(250);
static constexpr size_t kMostNews = 200;
static constexpr time_t kSeenEvery = 10;  // seconds; that a camera was seen again is no news each time

// In a full table, one that answers takes the place of one that was only heard: reports are easily made up.
CameraTable::Entry* CameraTable::entryFor(const std::string& mac, bool answered) {
    const auto known = cameras_.find(mac);
    if (known != cameras_.end()) return &known->second;
    if (cameras_.size() >= kMost) {
        const auto heard = std::ranges::find_if(cameras_, [](const auto& one) { return !one.second.found.answered; });
        if (!answered || heard == cameras_.end()) return nullptr;
        remove(heard);
    }
    return &cameras_[mac];
}

std::map<std::string, CameraTable::Entry>::iterator CameraTable::remove(std::map<std::string, Entry>::iterator camera) {
    move(camera->first, camera->second.found.camera.address, Ipv4{});
    changed_.erase(camera->first);
    return cameras_.erase(camera);
}

void CameraTable::move(const std::string& mac, Ipv4 from, Ipv4 to) {
    if (client::isSame(from, to)) return;
    const auto touch = [&](const std::set<std::string>& holders, size_t count) {
        if (holders.size() == count) changed_.insert(holders.begin(), holders.end());
    };
    const auto left = holders_.find(client::addressText(from));
    if (left != holders_.end()) {
        left->second.erase(mac);
        touch(left->second, 1);
        if (left->second.empty()) holders_.erase(left);
    }
    if (!client::isSet(to)) return;
    std::set<std::string>& holders = holders_[client::addressText(to)];
    holders.insert(mac);
    touch(holders, 2);
}

// A report tells less than a reply: what it does not tell stays as it was.
static Found merged(const Found& known, const Found& heard) {
    if (heard.answered || !known.answered) return heard;
    Found result = heard;
    result.answered = true;
    result.camera = known.camera;
    result.camera.address = heard.camera.address;
    result.camera.netmask = heard.camera.netmask;
    result.camera.name = heard.camera.name;
    result.camera.product = heard.camera.product;
    result.camera.firmware = heard.camera.firmware;
    result.camera.hardware = heard.camera.hardware;
    return result;
}

bool CameraTable::take(const Found& found, Time now, time_t clock) {
    const std::string mac = client::macText(found.camera.mac);
    Entry* entry = entryFor(mac, found.answered);
    if (entry == nullptr) return false;
    const bool isNew = entry->seenClock == 0;
    const bool isMoved = !client::isSame(entry->found.camera.address, found.camera.address);
    move(mac, entry->found.camera.address, found.camera.address);
    const bool sharedMac = entry->found.sharesMac;
    entry->found = merged(entry->found, found);
    entry->found.sharesMac |= sharedMac;
    entry->seen = now;
    entry->seenClock = clock;
    if (found.answered) entry->hasMissed = false;
    changed_.insert(mac);
    return !found.answered && (isNew || isMoved);
}

void CameraTable::endSearch(const std::vector<Found>& answered, Time now) {
    std::map<std::string, bool> macs;  // with what they share
    for (const Found& one : answered) {
        if (one.answered) macs[client::macText(one.camera.mac)] |= one.sharesMac;
    }
    for (auto& [mac, entry] : cameras_) {
        const auto found = macs.find(mac);
        const bool hasMissed = found == macs.end(), sharesMac = !hasMissed && found->second;
        const bool isSame = entry.isAsked && entry.hasMissed == hasMissed && entry.found.sharesMac == sharesMac;
        if (!isSame) changed_.insert(mac);
        entry.isAsked = true;
        entry.hasMissed = hasMissed;
        entry.found.sharesMac = sharesMac;
    }
    if (cameras_.size() < kMost) return;
    for (auto camera = cameras_.begin(); camera != cameras_.end();) {
        camera = isSilent(camera->second, now) ? remove(camera) : std::next(camera);
    }
}

bool CameraTable::isSilent(const Entry& entry, Time now) { return entry.hasMissed && now - entry.seen >= kSilentAfter; }

bool CameraTable::isDoubtful(Time now) const {
    return std::ranges::any_of(cameras_, [&](const auto& one) {
        const Entry& entry = one.second;
        return !entry.hasMissed && now - entry.seen >= kSilentAfter;
    });
}

bool CameraTable::sharesAddress(const Entry& entry) const {
    const auto holders = holders_.find(client::addressText(entry.found.camera.address));
    return holders != holders_.end() && holders->second.size() > 1;
}

static const char* textOfProblem(const std::string& code) {
    static constexpr std::pair<const char*, const char*> kTexts[] = {
        {"other-subnet",      "its address is of no network of this machine; it needs another before it can be reached"},
        {"duplicate-address", "another camera has the same address"                                                    },
        {"duplicate-mac",     "the same MAC answers from two addresses"                                                },
        {"sender-differs",    "its answers come from another address than it says"                                     },
        {"only-heard",        "it reports, but does not answer: something on the way keeps its answers back"           },
        {"silent",            "it has neither answered nor reported for a while"                                       },
    };
    for (const auto& [known, text] : kTexts) {
        if (code == known) return text;
    }
    return "";
}

Record CameraTable::recordOf(const Entry& entry, Time now) const {
    Found found = entry.found;
    found.sharesAddress = sharesAddress(entry);
    Record record = ::recordOf(found);
    std::vector<std::string> codes = problemsOf(found);
    if (!found.answered && found.isNear && entry.isAsked) codes.emplace_back("only-heard");
    if (isSilent(entry, now)) codes.emplace_back("silent");
    Record problems = Record::array();
    for (const std::string& code : codes) {
        problems.push_back({
            {"code", code               },
            {"text", textOfProblem(code)}
        });
    }
    record["problems"] = problems;
    record["state"] = isSilent(entry, now) ? "silent" : "present";
    return record;
}

bool CameraTable::tell(Entry& entry, Time now, std::vector<Record>& records) const {
    if (entry.told && now - *entry.told < kTellEvery) return false;
    Record record = recordOf(entry, now);
    std::string text = record.dump(-1, ' ', true, Record::error_handler_t::replace);
    if (text == entry.toldText && entry.seenClock - entry.toldClock < kSeenEvery) return true;
    entry.told = now;
    entry.toldText = std::move(text);
    entry.toldClock = entry.seenClock;
    entry.isSilent = isSilent(entry, now);
    record["lastSeen"] = isoTime(entry.seenClock);
    records.push_back(std::move(record));
    return true;
}

std::vector<Record> CameraTable::news(Time now) {
    for (auto& [mac, entry] : cameras_) {
        if (entry.isSilent != isSilent(entry, now)) changed_.insert(mac);
    }
    std::vector<Record> records;
    for (size_t left = changed_.size(); left > 0 && records.size() < kMostNews; left--) {
        auto mac = changed_.upper_bound(turn_);
        if (mac == changed_.end()) mac = changed_.begin();
        turn_ = *mac;
        if (tell(cameras_.at(*mac), now, records)) changed_.erase(mac);
    }
    return records;
}

std::optional<Found> CameraTable::find(const std::string& mac) const {
    const auto known = cameras_.find(mac);
    return known != cameras_.end() ? std::optional(known->second.found) : std::nullopt;
}

std::vector<Found> CameraTable::present(Time now) const {
    std::vector<Found> found;
    found.reserve(cameras_.size());
    for (const auto& [mac, entry] : cameras_) {
        if (!isSilent(entry, now)) found.push_back(entry.found);
    }
    return found;
}

Record CameraTable::records(Time now) const {
    Record records = Record::array();
    for (const auto& [mac, entry] : cameras_) {
        Record record = recordOf(entry, now);
        record["lastSeen"] = isoTime(entry.seenClock);
        records.push_back(std::move(record));
    }
    return records;
}
