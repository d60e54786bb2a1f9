#include "client/settings/setting.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "client/settings/rows.h"

namespace client {

static constexpr Group kOrder[] = {Group::Services, Group::Clock, Group::Password, Group::Wifi, Group::Basic};

static constexpr GroupFacts kFacts[] = {
    {"network services",       "only stores it",                                                       std::chrono::seconds(0) },
    {"clock",                  "sets its zone and clock, which takes 8 s if it follows a time server", std::chrono::seconds(10)},
    {"password",               "restarts its web and streaming servers",                               std::chrono::seconds(3) },
    {"wireless",               "resets its wireless interface",                                        std::chrono::seconds(5) },
    {"name, port and address", "restarts its web server and its network",                              std::chrono::seconds(10)},
};

std::span<const Group> groupsInOrder() { return kOrder; }

const GroupFacts& factsOf(Group group) { return kFacts[static_cast<size_t>(group)]; }

std::span<const Setting> allSettings() {
    static const std::vector<Setting> kAll = [] {
        std::vector<Setting> all;
        for (const auto rows : {basicRows(), servicesRows(), wifiRows(), clockRows(), passwordRows()}) {
            all.insert(all.end(), rows.begin(), rows.end());
        }
        return all;
    }();
    return kAll;
}

const Setting* findSetting(std::string_view key) {
    const auto all = allSettings();
    const auto found = std::ranges::find_if(all, [&](const Setting& setting) { return key == setting.key; });
    return found != all.end() ? &*found : nullptr;
}

// How many letters must be put in, left out or changed to make one text of the other.
static size_t distance(std::string_view one, std::string_view other) {
    std::vector<size_t> row(other.size() + 1);
    for (size_t i = 0; i < row.size(); i++) row[i] = i;
    for (size_t i = 0; i < one.size(); i++) {
        size_t diagonal = row[0]++;
        for (size_t k = 0; k < other.size(); k++) {
            const size_t changed = diagonal + (one[i] == other[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({changed, row[k] + 1, row[k + 1] + 1});
        }
    }
    return row.back();
}

std::vector<std::string> nearestKeys(std::string_view key) {
    constexpr size_t kNear = 3;
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const Setting& setting : allSettings()) {
        const std::string_view known = setting.key;
        const bool isPart = !key.empty() && known.find(key) != known.npos;
        const size_t away = isPart ? 0 : distance(key, known);
        if (away <= kNear) ranked.emplace_back(away, setting.key);
    }
    std::ranges::stable_sort(ranked, {}, &std::pair<size_t, std::string>::first);
    std::vector<std::string> keys;
    keys.reserve(ranked.size());
    for (auto& [away, name] : ranked) keys.push_back(std::move(name));
    return keys;
}

bool isSame(const Setting& setting, const CameraState& one, const CameraState& other) {
    if (setting.get != nullptr) return setting.get(one) == setting.get(other);
    const Secret* first = setting.secret(one);
    const Secret* second = setting.secret(other);
    if (first == nullptr || second == nullptr) return first == second;
    return first->reveal() == second->reveal();
}

bool parseOnOff(const std::string& text) {
    for (const char* word : {"on", "yes", "true", "1"}) {
        if (text == word) return true;
    }
    for (const char* word : {"off", "no", "false", "0"}) {
        if (text == word) return false;
    }
    throw badValue("must be 'on' or 'off'");
}

void checkLength(const std::string& text, size_t longest) {
    if (text.find('\0') != text.npos) throw badValue("holds a NUL byte");
    if (text.size() <= longest) return;
    throw badValue("has " + std::to_string(text.size()) + " bytes; at most " + std::to_string(longest) + " fit");
}

unsigned parseNumber(const std::string& text, unsigned lowest, unsigned highest) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && !text.empty();
    if (isNumber && number >= lowest && number <= highest) return number;
    throw badValue("must be a number from " + std::to_string(lowest) + " to " + std::to_string(highest));
}

}  // namespace client
