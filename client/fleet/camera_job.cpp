#include "client/fleet/camera_job.h"

#include <algorithm>
#include <utility>

#include "client/error.h"
#include "client/session/heard.h"
#include "client/text.h"

namespace client {

CameraJob::CameraJob(Link& link, Family family, Patience patience, std::vector<Login> logins,
                     std::function<void(const std::string&)> note)
    : link_(link), family_(family), patience_(patience), logins_(std::move(logins)), note_(std::move(note)) {}

// Several cameras behind one address: what is sent there reaches any of them, so all are asked at once.
Session CameraJob::open(const Found& found, const Login& login) {
    const Target target{found.camera.mac, found.camera.address, found.interface, found.sharesAddress};
    return Session(link_, Conversation(link_, family_, target, patience_, note_), login);
}

Session CameraJob::openWithLogin(const Found& found) {
    while (true) {
        Session session = open(found, logins_.front());
        try {
            session.checkLogin();
            return session;
        } catch (const Error& error) {
            if (error.kind() != ErrorKind::Credentials || logins_.size() == 1) throw;
            logins_.erase(logins_.begin());
        }
    }
}

static std::vector<Group> groupsOf(const std::vector<Assignment>& assignments) {
    std::vector<Group> groups;
    for (const Assignment& one : assignments) {
        if (std::ranges::count(groups, one.setting->group) == 0) groups.push_back(one.setting->group);
    }
    return groups;
}

static std::optional<std::string> textOf(const Setting& setting, const CameraState& state) {
    return setting.get != nullptr ? std::optional(setting.get(state)) : std::nullopt;
}

static CameraPlan planOf(const Found& found, const CameraState& state, const std::vector<Assignment>& assignments) {
    CameraPlan plan;
    plan.found = found;
    plan.state = state;
    plan.assignments = assignments;
    return plan;
}

// Whatever is asked counts as a change, where what the camera has is not known.
static CameraPlan planHeard(const Found& found, const std::vector<Assignment>& assignments) {
    refuseHeard(found, assignments);
    CameraPlan plan = planOf(found, heardState(found), assignments);
    plan.wanted = withAssignments(plan.state, thoseForHeard(assignments));
    for (const Group group : groupsInOrder()) {
        if (std::ranges::count(groupsOf(assignments), group) > 0) plan.groups.push_back(group);
    }
    for (const Assignment& one : assignments) {
        const Setting& setting = *one.setting;
        const bool isTold = std::string_view(setting.key) == "name" || std::string_view(setting.key) == "ipv4.address";
        if (isTold && isSame(setting, plan.state, plan.wanted)) continue;
        const auto before = isTold ? textOf(setting, plan.state) : std::nullopt;
        const auto* text = std::get_if<std::string>(&one.value);
        plan.changes.push_back({&setting, before, text != nullptr ? std::optional(*text) : std::nullopt});
    }
    return plan;
}

static std::chrono::seconds awayFor(const std::vector<Group>& groups) {
    std::chrono::seconds away{0};
    for (const Group group : groups) away += factsOf(group).away;
    return away;
}

CameraPlan CameraJob::lookAnswering(const Found& found, const std::vector<Assignment>& assignments) {
    Session session = openWithLogin(found);
    CameraPlan plan = planOf(found, session.read(groupsOf(assignments)), assignments);
    plan.wanted = withAssignments(plan.state, assignments);
    plan.groups = changedGroups(plan.state, plan.wanted);
    for (const Assignment& one : assignments) {
        if (isSame(*one.setting, plan.state, plan.wanted)) continue;
        plan.changes.push_back({one.setting, textOf(*one.setting, plan.state), textOf(*one.setting, plan.wanted)});
    }
    return plan;
}

CameraPlan CameraJob::look(const Found& found, const std::vector<Assignment>& assignments) {
    CameraPlan plan = found.answered ? lookAnswering(found, assignments) : planHeard(found, assignments);
    plan.away = awayFor(plan.groups);
    plan.logins = logins_;
    return plan;
}

CameraState CameraJob::readAll(const Found& found) {
    Session session = openWithLogin(found);
    const std::vector<Group> all(groupsInOrder().begin(), groupsInOrder().end());
    return session.read(all);
}

static void verify(Session& session, const CameraState& wanted, const std::vector<Assignment>& assignments) {
    std::string keys;
    for (const std::string& key : session.verify(wanted, assignments)) keys += (keys.empty() ? "" : ", ") + key;
    if (keys.empty()) return;
    throw Error(ErrorKind::Unverified, "the camera took the change, but does not show it: " + keys);
}

void CameraJob::changeAnswering(Session& session, const CameraPlan& plan, const Session::Watch& watch) {
    session.apply(plan.state, plan.wanted, watch);
    verify(session, plan.wanted, plan.assignments);
}

void CameraJob::changeHeard(const CameraPlan& plan, const Session::Watch& watch) {
    const std::vector<Assignment> basic = thoseForHeard(plan.assignments);
    Session session = open(plan.found, logins_.front());
    session.applyUnheard(plan.state, plan.wanted, watch);
    verify(session, plan.wanted, basic);
    if (basic.size() == plan.assignments.size()) return;
    Found found = plan.found;
    found.camera = session.identify();
    found.answered = true;
    change(look(found, plan.assignments), watch);
}

void CameraJob::change(const CameraPlan& plan, const Session::Watch& watch) {
    if (plan.changes.empty()) return;
    if (plan.isOnlyHeard()) return changeHeard(plan, watch);
    Session session = openWithLogin(plan.found);
    changeAnswering(session, plan, watch);
}

std::optional<Found> CameraJob::find(Mac mac, const Interface& interface, std::chrono::seconds patience) {
    const Target target{mac, {}, interface, false};
    return Session(link_, Conversation(link_, family_, target, patience_, note_), logins_.front())
        .awaitReturn(patience);
}

std::chrono::seconds timeFor(const std::vector<std::chrono::seconds>& cameras, size_t parallel) {
    if (cameras.empty()) return std::chrono::seconds(0);
    std::vector<std::chrono::seconds> workers(std::max<size_t>(parallel, 1));
    for (size_t i = 1; i < cameras.size(); i++) *std::ranges::min_element(workers) += cameras[i];
    return cameras.front() + std::ranges::max(workers);
}

std::optional<std::string> restorableValue(const Setting& setting, const CameraState& state) try {
    if (setting.isSecret() || setting.isReadOnly()) return std::nullopt;
    const std::string text = setting.get(state);
    CameraState again = state;
    setting.set(again, text);
    return text;
} catch (const Error&) {
    return std::nullopt;
}

}  // namespace client
