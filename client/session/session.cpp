#include "client/session/session.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "client/commands/supported.h"
#include "client/error.h"
#include "client/outcome.h"
#include "client/settings/rows.h"
#include "client/text.h"
#include "client/time_zones.h"
#include "protocol/administrator.h"
#include "protocol/alert_info.h"
#include "protocol/network_adv.h"
#include "protocol/opcodes.h"
#include "protocol/setting_reply.h"
#include "protocol/site_survey.h"
#include "protocol/supported_functions.h"
#include "protocol/system_datetime.h"
#include "protocol/wifi.h"

namespace client {

Session::Session(Link& link, Conversation conversation, Login login)
    : link_(link), conversation_(std::move(conversation)), login_(std::move(login)) {}

Reply Session::ask(uint16_t opcode, std::vector<uint8_t> request, size_t replyLength) {
    auto reply = conversation_.ask(opcode, std::move(request), replyLength);
    if (!reply) {
        throw Error(ErrorKind::NotFound, "camera " + macText(target().mac) +
                                             " does not answer: it may be off, on another "
                                             "network, or its answers go to a gateway of its own");
    }
    checkOutcome(*reply);
    return *reply;
}

Camera Session::identify() {
    const Family family = conversation_.family();
    const Reply reply = ask(opcode::kDiscovery, std::vector<uint8_t>(sizeof(PacketHeader)), discoveryLength(family));
    const auto camera = decodeCamera(family, reply);
    conversation_.moveTo(camera->address);
    return *camera;
}

void Session::readGroup(Group group, CameraState& state) {
    const std::vector<uint8_t> request = protectedRequest(login_);
    switch (group) {
        case Group::Services:
            state.services = decodeNetworkServices(ask(opcode::kGetNetworkAdv, request, sizeof(NetworkAdvReply)));
            return;
        case Group::Clock:
            state.clock = decodeClock(ask(opcode::kGetDatetime, request, sizeof(DatetimeReply)));
            return;
        case Group::Wifi:
            state.wifi = decodeWifi(ask(opcode::kGetWifi, request, sizeof(WifiReply)));
            return;
        case Group::Password:
            checkLogin();
            state.password = login_.password;
            return;
        case Group::Basic:
            return;  // what can be known of it stands in the discovery reply
    }
}

CameraState Session::read(std::span<const Group> groups) {
    CameraState state;
    state.camera = identify();
    for (const Group group : groups) readGroup(group, state);
    return state;
}

std::chrono::seconds Session::sendGroup(Group group, const GroupRequest& request, const CameraState& wanted) {
    const Reply reply = ask(request.opcode, request.bytes, sizeof(SettingReply));
    if (group == Group::Password) login_.password = *wanted.password;
    if (group == Group::Clock) timeSet_ = link_.now();
    return std::max(factsOf(group).away, std::chrono::ceil<std::chrono::seconds>(timeAway(reply)));
}

// A camera may answer once more from its old address before it moves.
static bool isWhereWanted(const Camera& camera, const Camera& wanted) {
    return wanted.dhcp || isSame(camera.address, wanted.address);
}

// Where only its reports reach this machine, the next of them is the proof, and it may take its time.
static constexpr std::chrono::seconds kReportInterval(31);

void Session::awaitGroup(Group group, std::chrono::seconds away, const CameraState& wanted) {
    if (group == Group::Basic && !wanted.camera.dhcp) conversation_.moveTo(wanted.camera.address);
    const auto isBack = [&](const Camera& camera) {
        return group != Group::Basic || isWhereWanted(camera, wanted.camera);
    };
    const bool isFar = group == Group::Basic && !isNear(target().interface, target().address);
    const auto patience = 3 * away + (isFar ? kReportInterval : std::chrono::seconds(0));
    const auto found = awaitReturn(patience, isBack);
    if (!found) {
        throw Error(ErrorKind::Unverified, "the camera was sent the change, but has not been seen with it within " +
                                               std::to_string(patience.count()) +
                                               " s: its address may be one that does not reach this machine, or, where "
                                               "it could not answer, the password wrong");
    }
    heard_ = found->answered ? std::nullopt : std::optional(found->camera);
}

// All are encoded before the first is sent, so that a value that will not do stops the whole.
void Session::apply(const CameraState& state, const CameraState& wanted, const Watch& watch, End end) {
    const std::vector<Group> groups = changedGroups(state, wanted);
    for (const Group group : groups) encodeGroup(group, state, wanted, login_);
    for (const Group group : groups) {
        const auto away = sendGroup(group, encodeGroup(group, state, wanted, login_), wanted);
        watch({Progress::Step::Sent, group, away});
        const bool isEnd = group == groups.back() && end == End::Sent;
        if (away.count() == 0 || isEnd) continue;
        watch({Progress::Step::Away, group, away});
        awaitGroup(group, away, wanted);
        watch({Progress::Step::Back, group, away});
    }
}

void Session::applyUnheard(const CameraState& state, const CameraState& wanted, const Watch& watch, End end) {
    const GroupRequest request = encodeGroup(Group::Basic, state, wanted, login_);
    const auto away = factsOf(Group::Basic).away;
    if (const auto reply = conversation_.ask(request.opcode, request.bytes, sizeof(SettingReply))) checkOutcome(*reply);
    watch({Progress::Step::Sent, Group::Basic, away});
    if (end == End::Sent) return;
    watch({Progress::Step::Away, Group::Basic, away});
    awaitGroup(Group::Basic, away, wanted);
    watch({Progress::Step::Back, Group::Basic, away});
}

static std::vector<Group> groupsOf(std::span<const Assignment> assignments) {
    std::vector<Group> groups;
    for (const Assignment& assignment : assignments) {
        if (std::ranges::find(groups, assignment.setting->group) == groups.end()) {
            groups.push_back(assignment.setting->group);
        }
    }
    return groups;
}

// How far a clock may be off after the change, for a camera that was busy meanwhile.
static constexpr time_t kClockTolerance = 60;

bool Session::showsTime(const CameraState& state, const CameraState& wanted) const {
    const TimeZone* zone = findTimeZone(wanted.clock->timezone);
    const auto now = std::chrono::system_clock::now();
    std::string digits = wanted.timeToSet;
    time_t passed = 0;
    if (digits == "now") {
        digits = zone != nullptr ? localTimeIn(*zone, wanted.clock->daylightSaving, now).value_or("") : "";
    } else {
        passed = std::chrono::duration_cast<std::chrono::seconds>(link_.now() - timeSet_.value_or(link_.now())).count();
    }
    std::string shown;
    std::ranges::copy_if(state.clock->localTime.value_or(""), std::back_inserter(shown),
                         [](char letter) { return letter >= '0' && letter <= '9'; });
    const auto wantedMoment = momentOf(digits), shownMoment = momentOf(shown);
    return wantedMoment && shownMoment && std::abs(*wantedMoment + passed - *shownMoment) <= kClockTolerance;
}

std::vector<std::string> Session::verifyHeard(const CameraState& wanted,
                                              std::span<const Assignment> assignments) const {
    CameraState state = wanted;
    state.camera.name = heard_->name;
    state.camera.address = heard_->address;
    state.camera.netmask = heard_->netmask;
    std::vector<std::string> different;
    for (const Assignment& assignment : assignments) {
        const Setting& setting = *assignment.setting;
        if (setting.group == Group::Basic && !isSame(setting, state, wanted)) different.emplace_back(setting.key);
    }
    return different;
}

std::vector<std::string> Session::verify(const CameraState& wanted, std::span<const Assignment> assignments) {
    if (heard_) return verifyHeard(wanted, assignments);
    const CameraState state = read(groupsOf(assignments));
    std::vector<std::string> different;
    for (const Assignment& assignment : assignments) {
        const Setting& setting = *assignment.setting;
        const bool isTime = std::string_view(setting.key) == "time.now";
        if (isTime ? !showsTime(state, wanted) : !isSame(setting, state, wanted)) different.emplace_back(setting.key);
    }
    return different;
}

UserClass Session::checkLogin() {
    return decodeUserClass(ask(opcode::kUserVerification, protectedRequest(login_), sizeof(UserVerificationReply)));
}

std::chrono::milliseconds Session::request(uint16_t opcode) {
    return timeAway(ask(opcode, protectedRequest(login_), sizeof(SettingReply)));
}

Survey Session::fetchSurvey() {
    return decodeSurvey(ask(opcode::kSiteSurvey, protectedRequest(login_), sizeof(SiteListReply)));
}

std::vector<uint16_t> Session::supported() {
    const std::vector<uint8_t> request(sizeof(PacketHeader));
    return decodeSupported(ask(opcode::kQuerySupport, request, sizeof(SupportedFunctionsReply)));
}

void Session::askAlert() {
    ask(opcode::kAlertInfo, std::vector<uint8_t>(sizeof(PacketHeader)), sizeof(AlertInfoReply));
}

// Silence, and a network that comes and goes with the camera, are what is waited out here.
std::optional<Found> Session::findNow(const IsBack& isBack) try {
    const auto isIt = [&](const Found& one) {
        const bool isAll = one.answered || !one.isNear;  // a report of a camera nearby comes before its answer
        return isAll && isSame(one.camera.mac, target().mac) && isBack(one.camera);
    };
    Search search{{target().interface}, conversation_.family(), std::chrono::seconds(1), 0, isIt};
    search.only = target().mac;
    Finder finder(link_, search, [](const std::string&) {});
    finder.run([](const Found&) {});
    const std::vector<Found> all = finder.all();
    const auto found = std::ranges::find_if(all, isIt);
    if (found == all.end()) return std::nullopt;
    conversation_.moveTo(found->camera.address);
    return *found;
} catch (const Error& error) {
    if (error.kind() != ErrorKind::Local) throw;
    return std::nullopt;
}

void Session::pause() {
    const auto end = link_.now() + std::chrono::milliseconds(200);
    while (link_.receiveUntil(end)) continue;
}

std::optional<Found> Session::awaitReturn(std::chrono::seconds patience, const IsBack& isBack) {
    for (const auto deadline = link_.now() + patience; link_.now() < deadline; pause()) {
        if (auto found = findNow(isBack)) return found;
    }
    return std::nullopt;
}

}  // namespace client
