#include "client/fleet/conflicts.h"

#include <algorithm>

#include "client/fleet/camera_check.h"
#include "client/text.h"

namespace client {

bool PlannedCamera::isMoved() const {
    const Camera& wanted = plan.wanted.camera;
    return !wanted.dhcp && !isSame(wanted.address, plan.state.camera.address);
}

std::vector<Ipv4> newAddresses(std::span<const PlannedCamera> cameras) {
    std::vector<Ipv4> addresses;
    for (const PlannedCamera& one : cameras) {
        const Ipv4 address = one.plan.wanted.camera.address;
        if (one.isMoved() && isNear(one.plan.found.interface, address)) addresses.push_back(address);
    }
    return addresses;
}

namespace {

class ConflictFinder {
public:
    ConflictFinder(std::span<const PlannedCamera> cameras, std::span<const Found> found,
                   std::span<const std::pair<Ipv4, Mac>> hosts, Elsewhere elsewhere)
        : cameras_(cameras), found_(found), hosts_(hosts), elsewhere_(elsewhere) {}

    std::vector<Fault> find() {
        for (const PlannedCamera& one : cameras_) {
            if (one.isMoved()) check(one);
        }
        return std::move(faults_);
    }

private:
    void check(const PlannedCamera& moved) {
        const Ipv4 address = moved.plan.wanted.camera.address;
        if (isSame(address, moved.plan.wanted.camera.gateway)) fault(moved, "is that of its gateway");
        for (const Subnet& subnet : moved.plan.found.interface.subnets) {
            if (isSame(address, subnet.address)) return fault(moved, "is that of this machine");
        }
        if (checkNetwork(moved) && checkCameras(moved)) checkHosts(moved);
    }

    void fault(const PlannedCamera& moved, const std::string& what) {
        const std::string address = addressText(moved.plan.wanted.camera.address);
        faults_.push_back(faultOn(*moved.camera, "ipv4.address " + address + " " + what));
    }

    bool checkNetwork(const PlannedCamera& moved) {
        const Interface& interface = moved.plan.found.interface;
        const bool isThere = isNear(interface, moved.plan.wanted.camera.address);
        if (isThere || elsewhere_ == Elsewhere::Allowed) return true;
        fault(moved, "is outside the network of " + interface.name + ", where the camera is; --elsewhere allows that");
        return false;
    }

    const PlannedCamera* plannedOf(Mac mac) const {
        const auto is = [&](const PlannedCamera& one) { return isSame(one.plan.found.camera.mac, mac); };
        const auto found = std::ranges::find_if(cameras_, is);
        return found != cameras_.end() ? &*found : nullptr;
    }

    // Cameras of the file were held against one another when it was read.
    bool checkCameras(const PlannedCamera& moved) {
        for (const Found& other : found_) {
            const bool isItself = isSame(other.camera.mac, moved.plan.found.camera.mac);
            if (isItself || !isSame(other.camera.address, moved.plan.wanted.camera.address)) continue;
            fault(moved, "is that of camera " + macText(other.camera.mac) + wayOut(moved, plannedOf(other.camera.mac)));
            return false;
        }
        return true;
    }

    static std::string wayOut(const PlannedCamera& moved, const PlannedCamera* other) {
        if (other == nullptr || !other->isMoved()) return "";
        const bool isSwap = isSame(other->plan.wanted.camera.address, moved.plan.state.camera.address);
        return isSwap ? ", which is to get its own: first give one of them a free address, with a file of its own"
                      : " until that is moved: do that first, with a file of its own";
    }

    // Who answered may be a camera that was asked a moment ago where it no longer is.
    void checkHosts(const PlannedCamera& moved) {
        for (const auto& [address, mac] : hosts_) {
            const auto isIt = [&mac = mac](const Found& one) { return isSame(one.camera.mac, mac); };
            if (!isSame(address, moved.plan.wanted.camera.address) || std::ranges::any_of(found_, isIt)) continue;
            fault(moved, "is in use: " + macText(mac) + " answers there");
        }
    }

    std::span<const PlannedCamera> cameras_;
    std::span<const Found> found_;
    std::span<const std::pair<Ipv4, Mac>> hosts_;
    Elsewhere elsewhere_;
    std::vector<Fault> faults_;
};

}  // namespace

std::vector<Fault> findConflicts(std::span<const PlannedCamera> cameras, std::span<const Found> found,
                                 std::span<const std::pair<Ipv4, Mac>> hosts, Elsewhere elsewhere) {
    return ConflictFinder(cameras, found, hosts, elsewhere).find();
}

}  // namespace client
