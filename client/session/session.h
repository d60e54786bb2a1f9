// Working with one camera: reading its settings, changing them, and waiting until it is back.
#pragma once

#include <functional>

#include "client/commands/account.h"
#include "client/commands/survey.h"
#include "client/conversation.h"
#include "client/search.h"
#include "client/settings/change.h"

namespace client {

// What a change is doing, for whoever looks on.
struct Progress {
    enum class Step { Sent, Away, Back };
    Step step;
    Group group;
    std::chrono::seconds away;  // how long that takes, as far as is known; 0: not at all
};

class Session {
public:
    using Watch = std::function<void(const Progress&)>;

    Session(Link& link, Conversation conversation, Login login);

    // Who the camera is. Throws Error NotFound when it does not answer.
    Camera identify();

    // Its settings, with the parts that these groups need. Throws Error NotFound or Credentials.
    CameraState read(std::span<const Group> groups);

    // Makes the camera as wanted, group after group, and waits until it is back after each that takes it away; after
    // the last one only if `end` says so. Throws Error BadValue before anything is sent, Credentials or Refused for
    // what the camera says, and NotFound for what it does not.
    enum class End { Waited, Sent };
    void apply(const CameraState& state, const CameraState& wanted, const Watch& watch, End end = End::Waited);

    // Sends what `apply` would for the basic group to a camera whose answers do not reach this machine.
    void applyUnheard(const CameraState& state, const CameraState& wanted, const Watch& watch, End end = End::Waited);

    // The assignments that the camera does not show; empty when all is as wanted. Of a camera whose answers no longer
    // reach this machine, those that its presence report does not show.
    std::vector<std::string> verify(const CameraState& wanted, std::span<const Assignment> assignments);

    // True when a change moved the camera to where only its presence reports reach this machine.
    bool isOnlyHeard() const { return heard_.has_value(); }

    UserClass checkLogin();
    std::chrono::milliseconds request(uint16_t opcode);  // reboot, factory reset, commit, start of a survey
    Survey fetchSurvey();
    std::vector<uint16_t> supported();
    void askAlert();

    // Asks until the camera answers or reports, with what it says of itself as it must be; nothing when it did not
    // within that time.
    using IsBack = std::function<bool(const Camera&)>;
    std::optional<Found> awaitReturn(
        std::chrono::seconds patience, const IsBack& isBack = [](const Camera&) { return true; });

    const Target& target() const { return conversation_.target(); }

private:
    Reply ask(uint16_t opcode, std::vector<uint8_t> request, size_t replyLength);
    void readGroup(Group group, CameraState& state);
    std::chrono::seconds sendGroup(Group group, const GroupRequest& request, const CameraState& wanted);
    void awaitGroup(Group group, std::chrono::seconds away, const CameraState& wanted);
    std::optional<Found> findNow(const IsBack& isBack);
    void pause();
    bool showsTime(const CameraState& state, const CameraState& wanted) const;
    std::vector<std::string> verifyHeard(const CameraState& wanted, std::span<const Assignment> assignments) const;

    Link& link_;
    Conversation conversation_;
    Login login_;
    std::optional<Camera> heard_;                     // what its report says, of a camera that is only heard
    std::optional<SteadyClock::time_point> timeSet_;  // when its clock was set
};

}  // namespace client
