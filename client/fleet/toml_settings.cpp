#include "client/fleet/toml_settings.h"

#include <algorithm>

#include "client/error.h"
#include "client/fleet/camera_check.h"

namespace client {

namespace {

using Kind = TomlValue::Kind;

class SettingsReader {
public:
    SettingsReader(const SecretReader& readSecret, std::vector<Fault>& faults)
        : readSecret_(readSecret), faults_(faults) {}

    void read(const TomlEntry& entry, const std::string& prefix) {
        const std::string key = prefix + entry.key;
        const Setting* setting = findSetting(key);
        if (setting != nullptr) return readSetting(*setting, entry.value);
        const auto isWithin = [&](const Setting& one) { return std::string_view(one.key).starts_with(key + "."); };
        if (entry.value.kind != Kind::Table || std::ranges::none_of(allSettings(), isWithin)) {
            return fault(entry.place, faultOfUnknownKey(key));
        }
        for (const TomlEntry& inner : entry.value.entries) read(inner, key + ".");
    }

    std::vector<TomlSetting> settings;

private:
    void fault(Place place, const std::string& text) { faults_.push_back({place, text}); }

    void readSetting(const Setting& setting, const TomlValue& value) {
        const auto isSame = [&](const TomlSetting& one) { return one.assignment.setting == &setting; };
        const std::string why = faultOfKey(setting);
        if (!why.empty()) return fault(value.place, why);
        const bool isTwin = std::ranges::any_of(settings, isSame);
        if (isTwin) return fault(value.place, setting.key + std::string(" stands twice"));
        try {
            settings.push_back({assignmentOf(setting, value), value.place});
        } catch (const Error& error) {
            fault(value.place, error.what());
        }
    }

    Assignment assignmentOf(const Setting& setting, const TomlValue& value) {
        if (setting.isSecret()) return {&setting, readSecret_(setting.key, referenceOf(setting, value))};
        const bool isSwitch = setting.choices != nullptr && std::ranges::count(setting.choices(), "on") > 0;
        const bool isText = value.kind == Kind::Text || value.kind == Kind::Number;
        if (isText || (isSwitch && value.kind == Kind::Switch)) return {&setting, value.text};
        throw Error(ErrorKind::BadValue, setting.key + std::string(" takes a text in quotes: ") + setting.values);
    }

    static std::string referenceOf(const Setting& setting, const TomlValue& value) {
        const TomlEntry* only = value.entries.size() == 1 ? &value.entries.front() : nullptr;
        const bool isText = only != nullptr && only->value.kind == Kind::Text && !only->value.text.empty();
        if (isText && (only->key == "file" || only->key == "env")) return only->key + ":" + only->value.text;
        const bool isSwitch = only != nullptr && only->value.kind == Kind::Switch;
        if (isSwitch && only->key == "prompt" && only->value.text == "on") return "prompt";
        throw Error(ErrorKind::BadValue,
                    setting.key + std::string(" is a secret and must not stand in the file: write "
                                              "{ file = \"PATH\" }, { env = \"NAME\" } or { prompt = true }"));
    }

    const SecretReader& readSecret_;
    std::vector<Fault>& faults_;
};

}  // namespace

std::vector<TomlSetting> readTomlSettings(const TomlValue& table, std::span<const std::string_view> others,
                                          const SecretReader& readSecret, std::vector<Fault>& faults) {
    SettingsReader reader(readSecret, faults);
    for (const TomlEntry& entry : table.entries) {
        if (std::ranges::count(others, entry.key) == 0) reader.read(entry, "");
    }
    return std::move(reader.settings);
}

}  // namespace client
