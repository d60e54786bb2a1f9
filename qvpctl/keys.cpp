#include "qvpctl/keys.h"

#include <algorithm>

#include "client/error.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/terminal_text.h"

using client::Error;
using client::ErrorKind;
using client::Setting;

// What is like no key may be a secret that lost its own, so it is not shown.
static Error unknownKey(const std::string& key) {
    const std::vector<std::string> near = client::nearestKeys(key);
    return Error(ErrorKind::BadValue,
                 near.empty() ? "there is no such setting; 'qvpctl help settings' lists them"
                              : "there is no setting " + printable(key) + "; did you mean " + near.front() + "?");
}

static bool isNamed(const Setting& setting, const std::string& key) {
    const std::string_view known = setting.key;
    return known.starts_with(key) && (known.size() == key.size() || known[key.size()] == '.');
}

std::vector<const Setting*> settingsNamed(const std::vector<std::string>& keys) {
    std::vector<const Setting*> chosen;
    for (const Setting& setting : client::allSettings()) {
        const bool isWanted = std::ranges::any_of(keys, [&](const auto& key) { return isNamed(setting, key); });
        if (keys.empty() || isWanted) chosen.push_back(&setting);
    }
    for (const std::string& key : keys) {
        if (std::ranges::none_of(chosen, [&](const Setting* setting) { return isNamed(*setting, key); })) {
            throw unknownKey(key);
        }
    }
    return chosen;
}

// What is no key may be a secret that lost its key, so it is not shown.
static Error withoutValue(const std::string& text) {
    const bool isKey = client::findSetting(text) != nullptr;
    return Error(ErrorKind::BadValue, isKey ? text + " needs a value: " + text + "=VALUE"
                                            : "what stands behind the camera must be of the form KEY=VALUE");
}

client::Assignment parseAssignment(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == text.npos) throw withoutValue(text);
    const std::string key = text.substr(0, equals);
    const Setting* setting = client::findSetting(key);
    if (setting == nullptr) throw unknownKey(key);
    const std::string value = text.substr(equals + 1);
    if (setting->isSecret()) return {setting, readSecret(key, value)};
    return {setting, value};
}

std::vector<client::Group> groupsOf(const std::vector<const Setting*>& settings) {
    std::vector<client::Group> groups;
    for (const Setting* setting : settings) {
        if (std::ranges::find(groups, setting->group) == groups.end()) groups.push_back(setting->group);
    }
    return groups;
}

std::string settingsHelp() {
    std::string text = "Settings:\n";
    for (const Setting& setting : client::allSettings()) {
        std::string key = setting.key;
        key.resize(std::max(key.size(), size_t{22}), ' ');
        text += "  " + key + setting.summary + "\n" + std::string(24, ' ') + setting.values + "\n";
        if (*setting.quirk != '\0') text += std::string(24, ' ') + "(" + setting.quirk + ")\n";
    }
    return text;
}
