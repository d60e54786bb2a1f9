#include "client/fleet/camera_check.h"

#include <algorithm>
#include <map>

#include "client/error.h"
#include "client/text.h"

namespace client {

static size_t indexOf(const FileCamera& camera, std::string_view key) {
    const auto is = [&](const Assignment& one) { return key == one.setting->key; };
    return static_cast<size_t>(std::ranges::find_if(camera.assignments, is) - camera.assignments.begin());
}

const Assignment* findAssignment(const FileCamera& camera, std::string_view key) {
    const size_t index = indexOf(camera, key);
    return index < camera.assignments.size() ? &camera.assignments[index] : nullptr;
}

// Of the assignment that a text is about, which begins with its key.
static size_t indexOfSubject(const FileCamera& camera, std::string_view what) {
    return indexOf(camera, what.substr(0, what.find_first_of(" :")));
}

Place placeOf(const FileCamera& camera, std::string_view what) {
    const size_t index = indexOfSubject(camera, what);
    return index < camera.places.size() ? camera.places[index] : camera.place;
}

Fault faultOn(const FileCamera& camera, const std::string& what) {
    const size_t index = indexOfSubject(camera, what), count = camera.assignments.size();
    const bool isShared = index < count && index >= count - camera.fromPolicy;
    return {placeOf(camera, what), isShared ? what + " (camera " + macText(camera.mac) + ")" : what};
}

std::string faultOfKey(const Setting& setting) {
    const std::string key = setting.key;
    if (setting.isReadOnly()) return key + " can only be read";
    if (key != "time.now") return "";
    return key + " is another a moment later; use time.ntp, or 'qvpctl set' with time.now=now";
}

std::string faultOfUnknownKey(const std::string& key) {
    const std::vector<std::string> near = nearestKeys(key);
    return "there is no setting " + key + (near.empty() ? "" : "; did you mean " + near.front() + "?");
}

// Values that no camera takes need no camera to be refused.
static void checkAlone(std::span<const Assignment> assignments) {
    CameraState any;
    any.services.emplace();
    any.wifi.emplace();
    any.clock.emplace();
    withAssignments(any, assignments);
}

static bool isWirelessKey(const Assignment& one) { return std::string_view(one.setting->key) == "wifi.key"; }

void checkValue(const Assignment& assignment) {
    if (!isWirelessKey(assignment)) checkAlone({&assignment, 1});
}

std::optional<Fault> faultTogether(const FileCamera& camera) try {
    const bool isSecurityKnown = findAssignment(camera, "wifi.security") != nullptr;
    std::vector<Assignment> together;
    std::ranges::copy_if(camera.assignments, std::back_inserter(together),
                         [&](const Assignment& one) { return isSecurityKnown || !isWirelessKey(one); });
    checkAlone(together);
    return std::nullopt;
} catch (const Error& error) {
    return faultOn(camera, error.what());
}

static std::string addressIn(const FileCamera& camera) {
    const Assignment* assignment = findAssignment(camera, "ipv4.address");
    if (assignment == nullptr) return "";
    const auto& text = std::get<std::string>(assignment->value);
    return text.substr(0, text.find('/'));
}

// "line 2 already", or where it stands in another file.
static std::string lineOf(const CameraFile& file, Place other, Place from) {
    const std::string table = other.file == from.file ? "" : " of " + file.table;
    return "line " + std::to_string(other.line) + table + " already";
}

std::vector<Fault> findTwins(const CameraFile& file) {
    std::map<std::string, Place> macs, addresses;
    std::vector<Fault> faults;
    for (const FileCamera& camera : file.cameras) {
        const bool isMac = std::ranges::any_of(camera.mac.bytes, [](uint8_t byte) { return byte != 0; });
        const std::string mac = "mac " + macText(camera.mac);
        const std::string address = "ipv4.address " + addressIn(camera);
        const auto [other, isNew] = macs.try_emplace(mac, camera.place);
        if (isMac && !isNew) {
            const std::string where = " stands in " + lineOf(file, other->second, camera.place);
            faults.push_back({camera.place, mac + where});
        }
        const auto [holder, isFree] = addresses.try_emplace(address, camera.place);
        if (findAssignment(camera, "ipv4.address") != nullptr && !isFree) {
            const std::string where = " is given to " + lineOf(file, holder->second, camera.place);
            faults.push_back(faultOn(camera, address + where));
        }
    }
    return faults;
}

}  // namespace client
