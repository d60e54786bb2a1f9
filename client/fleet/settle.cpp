#include "client/fleet/settle.h"

#include <fnmatch.h>

#include <algorithm>
#include <map>
#include <set>

#include "client/fleet/camera_check.h"
#include "client/text.h"

namespace client {

namespace {

bool isLike(const std::string& pattern, const std::string& text) {
    return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

bool isLikeMac(std::string pattern, Mac mac) {
    for (char& letter : pattern) {
        if (letter >= 'A' && letter <= 'F') letter = static_cast<char>(letter - 'A' + 'a');
    }
    std::string dashed = macText(mac);
    std::ranges::replace(dashed, ':', '-');
    return isLike(pattern, macText(mac)) || isLike(pattern, dashed);
}

enum class Member { No, Yes, Unknown };

bool is(const Assignment& one, std::string_view key) { return key == one.setting->key; }

bool isValue(const Assignment* one, const char* value) {
    return one != nullptr && std::get<std::string>(one->value) == value;
}

bool hasMethod(const PolicySettings& level, const char* method) {
    return std::ranges::any_of(level.assignments,
                               [&](const Assignment& one) { return is(one, "ipv4.method") && isValue(&one, method); });
}

bool isOfNetwork(const Assignment& one) { return std::string_view(one.setting->key).starts_with("ipv4."); }

// What a camera has already from a higher place excludes these, too.
class Displaced {
public:
    explicit Displaced(const FileCamera& camera)
        : isDhcp_(isValue(findAssignment(camera, "ipv4.method"), "dhcp")),
          hasNoKey_(isValue(findAssignment(camera, "wifi.security"), "none")) {
        for (const char* key : {"ipv4.address", "ipv4.gateway", "ipv4.dns"}) {
            isStatic_ |= findAssignment(camera, key) != nullptr;
        }
    }

    bool isAddress() const { return isDhcp_; }

    bool is(const Assignment& one) const {
        const std::string_view key = one.setting->key;
        if (key == "ipv4.method") return isStatic_ && isValue(&one, "dhcp");
        if (key == "ipv4.gateway" || key == "ipv4.dns") return isDhcp_;
        return key == "wifi.key" && hasNoKey_;
    }

private:
    bool isDhcp_, hasNoKey_, isStatic_ = false;
};

// A range while it is handed out.
struct Pool {
    uint64_t next = 0;
    size_t wanted = 0;                      // by how many cameras
    std::optional<std::string> doubt = {};  // why the next one may be another in the next run
};

class Settler {
public:
    Settler(const CameraFile& file, std::span<const Seen> seen) : file_(file), seen_(seen) {
        for (const PolicyGroup& group : file.policy.groups) levels_.push_back({&group.set, &group});
        std::ranges::reverse(levels_);
        levels_.push_back({&file.policy.defaults, nullptr});
        mayBeDhcp_ = std::ranges::any_of(levels_, [](const Level& one) { return hasMethod(*one.settings, "dhcp"); });
        for (const FileCamera& camera : file.cameras) noteOwnAddress(camera);
    }

    Settled settle() {
        for (size_t i = 0; i < file_.cameras.size(); i++) settled_.cameras.push_back(settleOne(i));
        for (const auto& [level, pool] : pools_) checkSize(*level, pool);
        for (const PolicyGroup& group : file_.policy.groups) {
            if (!populated_.contains(&group)) settled_.notes.push_back({group.place, "no camera is in this group"});
        }
        return std::move(settled_);
    }

private:
    struct Level {
        const PolicySettings* settings;
        const PolicyGroup* group;  // null: the defaults
    };

    void noteOwnAddress(const FileCamera& camera) {
        const Assignment* one = findAssignment(camera, "ipv4.address");
        if (one == nullptr) return;
        const auto& text = std::get<std::string>(one->value);
        if (const auto address = parseAddress(text.substr(0, text.find('/')))) taken_.insert(numberOf(*address));
    }

    // Whether those in it may get another address than those that are not.
    bool decidesAddress(const PolicySettings& level) const {
        return level.range || (mayBeDhcp_ && std::ranges::any_of(level.assignments, isOfNetwork));
    }

    // What is not known, for whoever can write it into the table.
    struct Membership {
        Member member = Member::Yes;
        std::string lacks;
    };

    static void hold(const std::optional<std::string>& pattern, const std::optional<std::string>& text,
                     const char* what, Membership& membership) {
        if (!pattern || membership.member == Member::No) return;
        if (!text) {
            membership.member = Member::Unknown;
            membership.lacks += (membership.lacks.empty() ? "a " : " and a ") + std::string(what);
        } else if (!isLike(*pattern, *text)) {
            membership.member = Member::No;
        }
    }

    Membership membershipOf(size_t index, const PolicyGroup* group) const {
        Membership membership;
        if (group == nullptr) return membership;
        const FileCamera& camera = file_.cameras[index];
        const Seen seen = seen_.empty() ? Seen{} : seen_[index];
        const Assignment* name = findAssignment(camera, "name");
        if (group->mac && !isLikeMac(*group->mac, camera.mac)) return {Member::No, ""};
        hold(group->product, camera.product.empty() ? seen.product : camera.product, "product", membership);
        hold(group->name, name != nullptr ? std::get<std::string>(name->value) : seen.name, "name", membership);
        return membership;
    }

    FileCamera settleOne(size_t index) {
        FileCamera camera = file_.cameras[index];
        bool isOpen = true;  // it may get its address here
        std::string doubt;   // why it is not known which address it gets, and so which the next one gets
        for (const Level& level : levels_) {
            const Membership membership = membershipOf(index, level.group);
            if (membership.member == Member::No) continue;
            populated_.insert(level.group);
            const bool hasAddress = findAssignment(camera, "ipv4.address") != nullptr || Displaced(camera).isAddress();
            if (doubt.empty()) isOpen = !hasAddress;
            if (membership.member == Member::Unknown) {
                doubt =
                    isOpen && decidesAddress(*level.settings) && doubt.empty() ? doubtOf(camera, membership) : doubt;
                leaveOpen(membership, camera);
            }
            if (isOpen && level.settings->range && !doubt.empty()) addDoubt(*level.settings, doubt);
            if (membership.member == Member::Yes) take(level, doubt.empty(), camera);
        }
        return camera;
    }

    static std::string doubtOf(const FileCamera& camera, const Membership& membership) {
        return "camera " + macText(camera.mac) + ", whose groups are not known: give that one " + membership.lacks +
               " in its row";
    }

    static void leaveOpen(const Membership& membership, FileCamera& camera) {
        if (camera.unsettled) return;
        camera.unsettled = Error(ErrorKind::NotFound, "its groups are not known while it is not heard; give it " +
                                                          membership.lacks + " in its row");
    }

    void addDoubt(const PolicySettings& level, const std::string& doubt) {
        Pool& pool = pools_[&level];
        if (!pool.doubt) pool.doubt = doubt;
    }

    void take(const Level& level, bool isCertain, FileCamera& camera) {
        const Displaced displaced(camera);
        const PolicySettings& settings = *level.settings;
        if (settings.range && isCertain && !displaced.isAddress()) takeAddress(settings, camera);
        for (size_t i = 0; i < settings.assignments.size(); i++) {
            const Assignment& one = settings.assignments[i];
            if (findAssignment(camera, one.setting->key) != nullptr || displaced.is(one)) continue;
            add(one, settings.places[i], camera);
        }
    }

    static void add(const Assignment& assignment, Place place, FileCamera& camera) {
        camera.assignments.push_back(assignment);
        camera.places.push_back(place);
        camera.fromPolicy++;
    }

    void takeAddress(const PolicySettings& level, FileCamera& camera) {
        if (findAssignment(camera, "ipv4.address") != nullptr) return;
        Pool& pool = pools_[&level];
        pool.wanted++;
        if (pool.doubt) {
            camera.unsettled = Error(ErrorKind::Ambiguous,
                                     "which address of " + level.range->text() + " it gets depends on " + *pool.doubt);
        }
        uint64_t address = std::max<uint64_t>(pool.next, level.range->first);
        while (address <= level.range->last && taken_.contains(static_cast<uint32_t>(address))) address++;
        pool.next = address + 1;
        if (address > level.range->last) return;
        add({findSetting("ipv4.address"), level.range->textOf(static_cast<uint32_t>(address))}, level.rangePlace,
            camera);
    }

    void checkSize(const PolicySettings& level, const Pool& pool) {
        const auto isHere = [&](uint32_t address) { return level.range->contains(address); };
        const size_t free = level.range->size() - static_cast<size_t>(std::ranges::count_if(taken_, isHere));
        if (pool.wanted <= free) return;
        settled_.faults.push_back({level.rangePlace, "ipv4.address " + level.range->text() + " has room for " +
                                                         std::to_string(free) + " of " + std::to_string(pool.wanted) +
                                                         " cameras"});
    }

    const CameraFile& file_;
    std::span<const Seen> seen_;
    std::vector<Level> levels_;  // the one that goes first is the first
    bool mayBeDhcp_ = false;
    std::set<uint32_t> taken_;  // addresses that stand in rows
    std::map<const PolicySettings*, Pool> pools_;
    std::set<const PolicyGroup*> populated_;
    Settled settled_;
};

}  // namespace

Settled settle(const CameraFile& file, std::span<const Seen> seen) { return Settler(file, seen).settle(); }

}  // namespace client
