#include "client/fleet/policy_file.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "client/error.h"
#include "client/fleet/camera_check.h"
#include "client/fleet/settle.h"
#include "client/fleet/toml_settings.h"
#include "client/text.h"

namespace client {

namespace {

using Kind = TomlValue::Kind;

class PolicyReader {
public:
    PolicyReader(const SecretReader& readSecret, const TableReader& readTable)
        : readSecret_(readSecret), readTable_(readTable) {}

    CameraFile read(const TomlValue& root) {
        refuseOthers(root);
        if (const TomlEntry* entry = root.find("defaults")) readDefaults(entry->value);
        for (const TomlValue* one : tablesOf(root, "group")) readGroup(*one);
        checkRanges();
        checkNames();
        const bool isPolicySound = file_.faults.empty();
        if (const TomlEntry* entry = root.find("table")) takeTable(entry->value);
        for (const TomlValue* one : tablesOf(root, "camera")) readCamera(*one);
        const bool isListed = root.find("table") != nullptr || !file_.cameras.empty();
        if (!isListed) fault({1, 0}, "no camera is listed: name a table, or list each in a [[camera]]");
        add(findTwins(file_));
        if (isPolicySound) checkSettled();
        sortByPlace(file_.faults);
        return std::move(file_);
    }

private:
    void fault(Place place, const std::string& text) { file_.faults.push_back({place, text}); }
    void add(const std::vector<Fault>& faults) { std::ranges::copy(faults, std::back_inserter(file_.faults)); }

    void refuseOthers(const TomlValue& root) {
        constexpr std::string_view kKnown[] = {"table", "defaults", "group", "camera"};
        for (const TomlEntry& entry : root.entries) {
            if (std::ranges::count(kKnown, entry.key) > 0) continue;
            const bool isSetting = findSetting(entry.key) != nullptr || !nearestKeys(entry.key).empty();
            fault(entry.place, entry.key + " has no place here: a policy has table, [defaults], [[group]] and " +
                                   "[[camera]]" + (isSetting ? "; settings for all cameras stand in [defaults]" : ""));
        }
    }

    std::vector<const TomlValue*> tablesOf(const TomlValue& root, const std::string& key) {
        std::vector<const TomlValue*> tables;
        const TomlEntry* entry = root.find(key);
        if (entry == nullptr) return tables;
        if (entry->value.kind != Kind::List) faultOfBrackets(entry->value.place, key);
        for (const TomlValue& one : entry->value.items) {
            if (one.kind == Kind::Table) {
                tables.push_back(&one);
            } else {
                faultOfBrackets(one.place, key);
            }
        }
        return tables;
    }

    void faultOfBrackets(Place place, const std::string& key) {
        std::string text = key;
        text.append(" stands in double brackets: [[").append(key).append("]]");
        fault(place, text);
    }

    void readDefaults(const TomlValue& value) {
        if (value.kind != Kind::Table) return fault(value.place, "defaults is a table of settings: [defaults]");
        readSettings(value, file_.policy.defaults);
    }

    void readSettings(const TomlValue& table, PolicySettings& settings) {
        const size_t before = file_.faults.size();
        settings.place = table.place;
        for (const TomlSetting& one : readTomlSettings(table, {}, readSecret_, file_.faults)) {
            try {
                takeSetting(one, settings);
            } catch (const Error& error) {
                fault(one.place, error.what());
            }
        }
        if (file_.faults.size() == before) checkTogether(settings);
    }

    static void takeSetting(const TomlSetting& one, PolicySettings& settings) {
        if (std::string_view(one.assignment.setting->key) == "ipv4.address") {
            settings.rangePlace = one.place;
            settings.range = rangeOf(std::get<std::string>(one.assignment.value));
        } else {
            checkValue(one.assignment);
            settings.assignments.push_back(one.assignment);
            settings.places.push_back(one.place);
        }
    }

    static AddressRange rangeOf(const std::string& text) try {
        return parseAddressRange(text);
    } catch (const Error& error) {
        throw Error(error.kind(), std::string("ipv4.address ") + error.what());
    }

    // What is wrong for every camera that gets these is told once.
    void checkTogether(const PolicySettings& settings) {
        FileCamera any;
        any.place = settings.place;
        any.assignments = settings.assignments;
        any.places = settings.places;
        if (settings.range) {
            any.assignments.push_back({findSetting("ipv4.address"), settings.range->textOf(settings.range->first)});
            any.places.push_back(settings.rangePlace);
        }
        if (const auto together = faultTogether(any)) file_.faults.push_back(*together);
    }

    void readGroup(const TomlValue& table) {
        PolicyGroup group;
        group.place = table.place;
        for (const TomlEntry& entry : table.entries) readPattern(entry, group);
        const TomlEntry* set = table.find("set");
        if (!group.product && !group.name && !group.mac) {
            fault(table.place, "this group has no product, name or mac; what is for all cameras stands in [defaults]");
        }
        if (set == nullptr) {
            fault(table.place, "this group has no settings: they stand in [group.set]");
        } else if (set->value.kind != Kind::Table) {
            fault(set->value.place, "set is a table of settings: [group.set]");
        } else {
            readSettings(set->value, group.set);
        }
        file_.policy.groups.push_back(std::move(group));
    }

    void readPattern(const TomlEntry& entry, PolicyGroup& group) {
        auto* pattern = entry.key == "product" ? &group.product
                        : entry.key == "name"  ? &group.name
                        : entry.key == "mac"   ? &group.mac
                                               : nullptr;
        if (entry.key == "set") return;
        if (pattern == nullptr) {
            fault(entry.place, entry.key + " has no place here: a group has product, name, mac and [group.set]");
        } else if (entry.value.kind != Kind::Text) {
            fault(entry.value.place, entry.key + " takes a pattern in quotes");
        } else {
            *pattern = entry.value.text;
        }
    }

    std::vector<const PolicySettings*> levels() const {
        std::vector<const PolicySettings*> all = {&file_.policy.defaults};
        for (const PolicyGroup& group : file_.policy.groups) all.push_back(&group.set);
        return all;
    }

    void checkRanges() {
        std::vector<const PolicySettings*> before;
        for (const PolicySettings* one : levels()) {
            if (!one->range) continue;
            for (const PolicySettings* other : before) {
                if (one->range->last < other->range->first || other->range->last < one->range->first) continue;
                fault(one->rangePlace, "ipv4.address " + one->range->text() + " shares addresses with line " +
                                           std::to_string(other->rangePlace.line));
            }
            before.push_back(one);
        }
    }

    // A camera must not leave its group by being named.
    void checkNames() {
        const auto isByName = [](const PolicyGroup& group) { return group.name.has_value(); };
        if (std::ranges::none_of(file_.policy.groups, isByName)) return;
        for (const PolicySettings* one : levels()) {
            for (size_t i = 0; i < one->assignments.size(); i++) {
                if (std::string_view(one->assignments[i].setting->key) != "name") continue;
                fault(one->places[i],
                      "name is given here, and a group goes by name: a camera could be in another "
                      "group afterwards; name each in its own row");
            }
        }
    }

    void takeTable(const TomlValue& value) {
        if (value.kind != Kind::Text) return fault(value.place, "table takes the path of a table (CSV) in quotes");
        file_.table = value.text;
        try {
            const PolicyTable table = readTable_(value.text);
            takeRows(readCameraTable(table.text, table.readSecret));
        } catch (const Error& error) {
            fault(value.place, std::string("table: ") + error.what());
        }
    }

    // All that was read of the table is of that file.
    void takeRows(CameraFile table) {
        for (Fault& one : table.faults) one.place.file = 1;
        for (FileCamera& camera : table.cameras) {
            camera.place.file = 1;
            for (Place& place : camera.places) place.file = 1;
        }
        add(table.faults);
        file_.cameras = std::move(table.cameras);
        file_.information = std::move(table.information);
        const auto isByProduct = [](const PolicyGroup& group) { return group.product.has_value(); };
        if (std::ranges::any_of(file_.policy.groups, isByProduct)) std::erase(file_.information, "product");
    }

    void readCamera(const TomlValue& table) {
        constexpr std::string_view kOthers[] = {"mac", "product"};
        FileCamera camera;
        const size_t before = file_.faults.size();
        camera.place = {table.place.line, 0};
        readMac(table, camera);
        if (const TomlEntry* product = table.find("product")) {
            if (product->value.kind != Kind::Text) fault(product->value.place, "product takes a text in quotes");
            camera.product = product->value.text;
        }
        for (const TomlSetting& one : readTomlSettings(table, kOthers, readSecret_, file_.faults)) {
            takeOwn(one, camera);
        }
        const auto together = file_.faults.size() == before ? faultTogether(camera) : std::nullopt;
        if (together) file_.faults.push_back(*together);
        camera.isSound = file_.faults.size() == before;
        file_.cameras.push_back(std::move(camera));
    }

    // As far as it is known before the cameras are asked.
    void checkSettled() {
        const Settled settled = settle(file_, {});
        add(settled.faults);
        for (const FileCamera& camera : settled.cameras) {
            const bool canBeJudged = camera.isSound && !camera.unsettled;
            const auto together = canBeJudged ? faultTogether(camera) : std::nullopt;
            if (together) file_.faults.push_back(*together);
        }
    }

    void readMac(const TomlValue& table, FileCamera& camera) {
        const TomlEntry* entry = table.find("mac");
        if (entry == nullptr) return fault(camera.place, "mac is missing: which camera is it?");
        const auto mac = entry->value.kind == Kind::Text ? parseMac(entry->value.text) : std::nullopt;
        if (!mac) fault(entry->value.place, "mac must be of the form \"02:00:5e:10:00:01\"");
        camera.mac = mac.value_or(Mac{});
    }

    void takeOwn(const TomlSetting& one, FileCamera& camera) try {
        const bool isAddress = std::string_view(one.assignment.setting->key) == "ipv4.address";
        if (isAddress && std::get<std::string>(one.assignment.value).find('-') != std::string::npos) {
            throw Error(ErrorKind::BadValue, "ipv4.address is a range: those stand in [defaults] and in [group.set]");
        }
        checkValue(one.assignment);
        camera.assignments.push_back(one.assignment);
        camera.places.push_back(one.place);
    } catch (const Error& error) {
        fault(one.place, error.what());
    }

    const SecretReader& readSecret_;
    const TableReader& readTable_;
    CameraFile file_;
};

}  // namespace

CameraFile readPolicyFile(std::string_view toml, const SecretReader& readSecret, const TableReader& readTable) {
    const Toml parsed = parseToml(toml);
    if (parsed.faults.empty()) return PolicyReader(readSecret, readTable).read(parsed.root);
    CameraFile file;
    file.faults = parsed.faults;
    return file;
}

std::optional<std::string> tableNamedIn(std::string_view toml) {
    const Toml parsed = parseToml(toml);
    const TomlEntry* entry = parsed.root.find("table");
    if (entry == nullptr || entry->value.kind != Kind::Text) return std::nullopt;
    return entry->value.text;
}

}  // namespace client
