#include "client/search.h"

#include <algorithm>
#include <utility>

#include "client/error.h"
#include "client/layout.h"
#include "client/text.h"
#include "protocol/opcodes.h"

namespace client {

static PacketHeader requestOf(const Search& search) {
    const uint16_t sequence = randomSequence();
    if (!search.only) return requestToAll(search.family, opcode::kDiscovery, sequence);
    return requestTo(*search.only, search.family, opcode::kDiscovery, sequence, sizeof(PacketHeader));
}

Finder::Finder(Link& link, Search search, std::function<void(const std::string&)> warn)
    : link_(link), search_(std::move(search)), warn_(std::move(warn)), request_(requestOf(search_)) {}

// One interface that cannot send does not stop the search on the others; when none can, nothing is left to wait for.
void Finder::sendRound(bool isFirst) {
    size_t failures = 0;
    for (const Interface& interface : search_.interfaces) {
        const int error = link_.broadcast(interface, bytesOf(request_));
        if (error == 0 || !isFirst) continue;
        const std::string what = "interface " + interface.name + ": cannot send";
        failures++;
        if (failures == search_.interfaces.size()) throw localError(what, error);
        warn_(localError(what, error).what());
    }
}

// A report tells less than a reply, so a reply takes its place.
void Finder::add(Found camera, const std::function<void(const Found&)>& found) {
    const auto known = std::ranges::find_if(found_, [&](const Found& other) {
        return isSame(other.camera.mac, camera.camera.mac) && isSame(other.camera.address, camera.camera.address);
    });
    if (known != found_.end() && (known->answered || !camera.answered)) return;
    if (known != found_.end()) {
        *known = camera;
    } else {
        found_.push_back(camera);
    }
    if (camera.answered) found(withShares(camera));
}

static Camera cameraOf(const Presence& presence) {
    Camera camera;
    camera.mac = presence.mac;
    camera.address = presence.address;
    camera.netmask = presence.netmask;
    camera.name = presence.name;
    camera.product = presence.product;
    camera.firmware = presence.firmware;
    camera.hardware = presence.hardware;
    return camera;
}

enum class Way { Answered, Heard };

// Nothing when it came in on none of the interfaces.
static std::optional<Found> foundBy(Way way, const Camera& camera, const Incoming& incoming,
                                    std::span<const Interface> interfaces) {
    const auto interface = std::ranges::find(interfaces, incoming.interfaceIndex, &Interface::index);
    if (interface == interfaces.end()) return std::nullopt;
    return Found{.camera = camera,
                 .interface = *interface,
                 .answered = way == Way::Answered,
                 .isNear = isNear(*interface, camera.address),
                 .sharesAddress = false,
                 .sharesMac = false,
                 .isElsewhere = !isSame(layoutOf<PacketHeader>(incoming.bytes).address, incoming.sender)};
}

std::optional<Found> heardFrom(const Incoming& incoming, std::span<const Interface> interfaces) {
    const auto presence = decodePresence(incoming.bytes);
    return presence ? foundBy(Way::Heard, cameraOf(*presence), incoming, interfaces) : std::nullopt;
}

void Finder::take(const Incoming& incoming, const std::function<void(const Found&)>& found) {
    auto one = heardFrom(incoming, search_.interfaces);
    const auto camera = answers(incoming.bytes, request_) ? decodeCamera(search_.family, incoming.bytes) : std::nullopt;
    if (camera) one = foundBy(Way::Answered, *camera, incoming, search_.interfaces);
    if (one) add(*one, found);
}

// From another subnet, an answer does not come: the report is all there will be.
static bool isComplete(const Found& one) { return one.answered || !one.isNear; }

bool Finder::isEnough() const {
    const auto complete = std::ranges::count_if(found_, isComplete);
    const bool areAllThere = search_.expected > 0 && static_cast<size_t>(complete) >= search_.expected;
    return areAllThere || (search_.isLast && std::ranges::any_of(found_, search_.isLast));
}

void Finder::run(const std::function<void(const Found&)>& found) {
    const auto start = link_.now();
    for (int round = 1; round <= search_.rounds && !isEnough(); round++) {
        sendRound(round == 1);
        const auto end = start + search_.wait * round / search_.rounds;
        while (!isEnough()) {
            const auto incoming = link_.receiveUntil(end);
            if (!incoming) break;
            take(*incoming, found);
        }
    }
    for (const Found& camera : found_) {
        if (!camera.answered) found(withShares(camera));
    }
}

Found Finder::withShares(Found one) const {
    for (const Found& other : found_) {
        const bool sameMac = isSame(one.camera.mac, other.camera.mac);
        const bool sameAddress = isSame(one.camera.address, other.camera.address);
        one.sharesAddress |= sameAddress && !sameMac && isSet(one.camera.address);
        one.sharesMac |= sameMac && !sameAddress;
    }
    return one;
}

std::vector<Found> Finder::all() const {
    std::vector<Found> result;
    for (const Found& one : found_) result.push_back(withShares(one));
    return result;
}

}  // namespace client
