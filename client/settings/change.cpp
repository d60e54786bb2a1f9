#include "client/settings/change.h"

#include <algorithm>
#include <string_view>

#include "client/commands/account.h"
#include "client/commands/basic_info.h"
#include "client/settings/rows.h"
#include "client/text.h"
#include "client/time_zones.h"
#include "protocol/opcodes.h"

namespace client {

static bool isAsked(std::span<const Assignment> assignments, std::string_view key) {
    return std::ranges::any_of(assignments, [&](const Assignment& one) { return one.setting->key == key; });
}

static void assign(CameraState& wanted, const Assignment& assignment) try {
    const Setting& setting = *assignment.setting;
    if (setting.isReadOnly()) throw badValue("can only be read");
    if (setting.isSecret()) {
        setting.setSecret(wanted, std::get<Secret>(assignment.value));
    } else {
        setting.set(wanted, std::get<std::string>(assignment.value));
    }
} catch (const Error& error) {
    throw Error(error.kind(), std::string(assignment.setting->key) + " " + error.what());
}

// The key of a network comes last: what it must be depends on the network's kind.
static bool isKey(const Assignment& assignment) { return std::string_view(assignment.setting->key) == "wifi.key"; }

static void refuseContradictions(std::span<const Assignment> assignments) {
    for (const Assignment& assignment : assignments) {
        const bool isDhcp = std::string_view(assignment.setting->key) == "ipv4.method" &&
                            std::get<std::string>(assignment.value) == "dhcp";
        for (const char* key : {"ipv4.address", "ipv4.gateway", "ipv4.dns"}) {
            if (!isDhcp || !isAsked(assignments, key)) continue;
            throw badValue(std::string(key) + " and ipv4.method=dhcp exclude each other");
        }
    }
    for (size_t i = 0; i < assignments.size(); i++) {
        if (isAsked(assignments.subspan(i + 1), assignments[i].setting->key)) {
            throw badValue(std::string(assignments[i].setting->key) + " is given twice");
        }
    }
}

// What is right by itself may be wrong beside the rest of what the camera will have.
static void refuseMisfits(const CameraState& wanted, std::span<const Assignment> assignments) {
    if (isAsked(assignments, "time.now") && wanted.clock->ntp) {
        throw badValue("time.now does not last while the camera follows " + wanted.clock->ntpServer +
                       "; time.ntp=off ends that");
    }
    const Camera& camera = wanted.camera;
    const bool isMoved = isAsked(assignments, "ipv4.address") || isAsked(assignments, "ipv4.gateway");
    const bool isReached = !isSet(camera.gateway) || isSameNetwork(camera.gateway, camera.address, camera.netmask);
    if (isMoved && !camera.dhcp && !isReached) {
        throw badValue("ipv4.gateway " + addressText(camera.gateway) + " is not in the network of ipv4.address " +
                       addressText(camera.address) + "; name another, or none");
    }
}

CameraState withAssignments(const CameraState& state, std::span<const Assignment> assignments) {
    refuseContradictions(assignments);
    std::vector<Assignment> inTurn(assignments.begin(), assignments.end());
    std::ranges::stable_sort(inTurn, {}, isKey);
    CameraState wanted = state;
    for (const Assignment& assignment : inTurn) assign(wanted, assignment);
    refuseMisfits(wanted, assignments);
    return wanted;
}

static bool isRead(Group group, const CameraState& state) {
    switch (group) {
        case Group::Services:
            return state.services.has_value();
        case Group::Clock:
            return state.clock.has_value();
        case Group::Wifi:
            return state.wifi.has_value();
        case Group::Password:
        case Group::Basic:
            break;
    }
    return true;
}

static bool isChanged(Group group, const CameraState& state, const CameraState& wanted) {
    if (!isRead(group, state)) return false;
    if (group == Group::Clock && !wanted.timeToSet.empty()) return true;
    return std::ranges::any_of(allSettings(), [&](const Setting& setting) {
        return setting.group == group && !isSame(setting, state, wanted);
    });
}

std::vector<Group> changedGroups(const CameraState& state, const CameraState& wanted) {
    std::vector<Group> groups;
    for (const Group group : groupsInOrder()) {
        if (isChanged(group, state, wanted)) groups.push_back(group);
    }
    return groups;
}

static std::vector<uint8_t> encodeBasic(const Camera& wanted, const Login& login) {
    const auto server = [&](size_t index) { return index < wanted.dns.size() ? wanted.dns[index] : Ipv4{}; };
    return encodeBasicInfo(login, {wanted.name, wanted.httpPort, wanted.dhcp, wanted.address, wanted.netmask,
                                   wanted.gateway, server(0), server(1)});
}

static bool isDdnsChanged(const NetworkServices& state, const NetworkServices& wanted) {
    return state.ddnsUser != wanted.ddnsUser || state.ddnsHost != wanted.ddnsHost ||
           state.ddnsPassword.reveal() != wanted.ddnsPassword.reveal();
}

static std::vector<uint8_t> encodeServices(const NetworkServices& state, const NetworkServices& wanted,
                                           const Login& login) {
    NetworkServicesChange change{wanted.upnp, std::nullopt};
    if (isDdnsChanged(state, wanted)) change.ddns = {wanted.ddnsUser, wanted.ddnsPassword, wanted.ddnsHost};
    return encodeNetworkServices(login, change);
}

static std::vector<uint8_t> encodeWifiGroup(const WifiSettings& wanted, const Login& login) {
    const Secret& wepKey = wanted.wepKeys[wanted.activeWepKey & 3];
    std::string fault;
    if (usesWep(wanted.security)) fault = checkWepKey(wepKey);
    if (usesPreSharedKey(wanted.security)) fault = checkPreSharedKey(wanted.preSharedKey);
    if (!fault.empty()) throw badValue("wifi.security " + nameOf(wanted.security) + " needs a wifi.key: " + fault);
    return encodeWifi(login, wanted);
}

// This machine's time in the camera's zone; a moment later where a camera would not take it.
static std::string timeNow(const ClockState& clock) {
    const TimeZone* zone = findTimeZone(clock.timezone);
    if (zone == nullptr) throw badValue("time.now=now needs a time.zone: the camera's is unknown");
    auto moment = std::chrono::system_clock::now();
    auto digits = localTimeIn(*zone, clock.daylightSaving, moment);
    if (digits && digits->ends_with("00")) {
        digits = localTimeIn(*zone, clock.daylightSaving, moment + std::chrono::seconds(1));
    }
    if (!digits) throw Error(ErrorKind::Local, std::string("this machine does not know the time zone ") + zone->name);
    try {
        checkTimeToSet(*digits);
    } catch (const Error& error) {
        throw badValue(std::string("time.now: this moment ") + error.what() + "; wait, or use time.ntp");
    }
    return *digits;
}

static std::vector<uint8_t> encodeClockGroup(const CameraState& wanted, const Login& login) {
    const ClockState& clock = *wanted.clock;
    if (findTimeZone(clock.timezone) == nullptr) {
        throw badValue("time.zone is needed: the camera has one that no request can carry");
    }
    const std::string time = wanted.timeToSet == "now" ? timeNow(clock) : wanted.timeToSet;
    return encodeClock(login, {time, clock.timezone, clock.daylightSaving, clock.ntp, clock.ntpServer});
}

GroupRequest encodeGroup(Group group, const CameraState& state, const CameraState& wanted, const Login& login) {
    switch (group) {
        case Group::Services:
            return {opcode::kSetNetworkAdv, encodeServices(*state.services, *wanted.services, login)};
        case Group::Clock:
            return {opcode::kSetDatetime, encodeClockGroup(wanted, login)};
        case Group::Password:
            return {opcode::kChangeAdmin, encodePasswordChange(login, *wanted.password)};
        case Group::Wifi:
            return {opcode::kSetWifi, encodeWifiGroup(*wanted.wifi, login)};
        case Group::Basic:
            break;
    }
    return {opcode::kSetBasicInfo, encodeBasic(wanted.camera, login)};
}

}  // namespace client
