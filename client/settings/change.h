// From what a camera has and what is wanted of it to the requests that make it so.
#pragma once

#include <map>
#include <string>
#include <variant>
#include <vector>

#include "client/settings/setting.h"

namespace client {

// KEY=VALUE, as a user asked for it; a secret never stands in a plain text.
struct Assignment {
    const Setting* setting;
    std::variant<std::string, Secret> value;
};

// Takes the assignments over, so that those that others depend on come first. Throws Error BadValue that names the key,
// also when two of them contradict each other.
CameraState withAssignments(const CameraState& state, std::span<const Assignment> assignments);

// The groups in which the two differ, in the order in which they are to be sent.
std::vector<Group> changedGroups(const CameraState& state, const CameraState& wanted);

// The request that makes a group as wanted. Throws Error BadValue for what the camera would refuse in the whole.
struct GroupRequest {
    uint16_t opcode;
    std::vector<uint8_t> bytes;  // room for the header in front
};
GroupRequest encodeGroup(Group group, const CameraState& state, const CameraState& wanted, const Login& login);

}  // namespace client
