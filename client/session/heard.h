// A camera that is only heard: its presence reports reach this machine, its answers do not.
#pragma once

#include <span>
#include <vector>

#include "client/search.h"
#include "client/settings/change.h"

namespace client {

// What is known of it. Its web port is not, and every request sets it.
CameraState heardState(const Found& found);

// The assignments that go to it unheard; the others wait until it answers.
bool isForHeard(const Assignment& assignment);
std::vector<Assignment> thoseForHeard(std::span<const Assignment> assignments);

// Throws Error NotFound unless they bring the camera to where its answers reach this machine: what is not said to it
// would be lost, for its request holds the whole of its addressing, and it cannot be asked first.
void refuseHeard(const Found& found, std::span<const Assignment> assignments);

}  // namespace client
