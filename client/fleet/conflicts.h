// What would go wrong on the network if every camera became as the file wants it.
#pragma once

#include <span>
#include <utility>
#include <vector>

#include "client/fleet/camera_file.h"
#include "client/fleet/camera_job.h"

namespace client {

// A camera that is there, and what it is to become.
struct PlannedCamera {
    const FileCamera* camera;
    CameraPlan plan;

    // True when it gets an address that it has not had.
    bool isMoved() const;
};

// The addresses that cameras get and that are reached without a router: those to ask whether somebody has them.
std::vector<Ipv4> newAddresses(std::span<const PlannedCamera> cameras);

enum class Elsewhere { Refused, Allowed };  // an address that is not of a network of this machine

// `found` is every camera that was heard, `hosts` who answers at the new addresses.
std::vector<Fault> findConflicts(std::span<const PlannedCamera> cameras, std::span<const Found> found,
                                 std::span<const std::pair<Ipv4, Mac>> hosts, Elsewhere elsewhere);

}  // namespace client
