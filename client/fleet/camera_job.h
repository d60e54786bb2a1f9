// One camera of many: what it has, what it is to have, and the change from one to the other.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "client/session/session.h"

namespace client {

struct SettingChange {
    const Setting* setting;
    std::optional<std::string> before, after;  // none of a secret
};

// What an assignment would change in a camera, seen from what it has.
struct CameraPlan {
    Found found{};
    CameraState state, wanted;
    std::vector<Assignment> assignments;
    std::vector<SettingChange> changes;
    std::vector<Group> groups;     // that change, in the order in which they are sent
    std::chrono::seconds away{0};  // how long that takes the camera
    std::vector<Login> logins;     // those that the camera has not refused, the one that it took first

    // Its answers do not reach this machine: what it has is known from its report alone, and what is not of the basic
    // group comes when it answers.
    bool isOnlyHeard() const { return !found.answered; }
};

class CameraJob {
public:
    // The logins are tried in their order, and one that was refused never again: after a change of the password the
    // camera has the second.
    CameraJob(Link& link, Family family, Patience patience, std::vector<Login> logins,
              std::function<void(const std::string&)> note);

    // Throws Error NotFound and Credentials, and BadValue for what the camera would refuse.
    CameraPlan look(const Found& found, const std::vector<Assignment>& assignments);

    // All of its settings.
    CameraState readAll(const Found& found);

    // Makes it so and reads it back. Throws what Session::apply does, and Unverified with the keys that differ.
    void change(const CameraPlan& plan, const Session::Watch& watch);

    // Where the camera is now; nothing while it is not heard.
    std::optional<Found> find(Mac mac, const Interface& interface, std::chrono::seconds patience);

private:
    Session open(const Found& found, const Login& login);
    Session openWithLogin(const Found& found);
    CameraPlan lookAnswering(const Found& found, const std::vector<Assignment>& assignments);
    void changeAnswering(Session& session, const CameraPlan& plan, const Session::Watch& watch);
    void changeHeard(const CameraPlan& plan, const Session::Watch& watch);

    Link& link_;
    Family family_;
    Patience patience_;
    std::vector<Login> logins_;
    std::function<void(const std::string&)> note_;
};

// How long it takes to change one of them, and then the others, that many at a time.
std::chrono::seconds timeFor(const std::vector<std::chrono::seconds>& cameras, size_t parallel);

// The value as text, if it can be set again; nothing of a secret, and of what a camera has but would not take.
std::optional<std::string> restorableValue(const Setting& setting, const CameraState& state);

}  // namespace client
