#include "client/session/heard.h"

#include <algorithm>
#include <iterator>

#include "client/error.h"

namespace client {

CameraState heardState(const Found& found) {
    CameraState state;
    state.camera = found.camera;
    state.camera.httpPort = 80;
    return state;
}

bool isForHeard(const Assignment& assignment) { return assignment.setting->group == Group::Basic; }

std::vector<Assignment> thoseForHeard(std::span<const Assignment> assignments) {
    std::vector<Assignment> some;
    std::ranges::copy_if(assignments, std::back_inserter(some), isForHeard);
    return some;
}

void refuseHeard(const Found& found, std::span<const Assignment> assignments) {
    const std::string heard = "the camera reports, but does not answer: ";
    if (found.isNear) throw Error(ErrorKind::NotFound, heard + "something on the way keeps its answers back");
    const auto isAddress = [](const Assignment& one) { return std::string_view(one.setting->key) == "ipv4.address"; };
    if (std::ranges::any_of(assignments, isAddress)) return;
    throw Error(ErrorKind::NotFound, heard + "its answers do not reach this machine; set its ipv4.address as well");
}

}  // namespace client
