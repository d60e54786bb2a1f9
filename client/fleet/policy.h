// What cameras are given beside what their own rows say: by default, and by the groups that they are in.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "client/fleet/address_range.h"
#include "client/fleet/fault.h"
#include "client/settings/change.h"

namespace client {

struct PolicySettings {
    Place place;
    std::vector<Assignment> assignments;  // without ipv4.address
    std::vector<Place> places;            // of each of them
    std::optional<AddressRange> range;    // ipv4.address
    Place rangePlace;
};

// The cameras that fit all of the patterns that are given.
struct PolicyGroup {
    Place place;
    std::optional<std::string> product, name, mac;
    PolicySettings set;
};

// A camera's own row goes before the groups, a later group before an earlier one, and all of them before the defaults.
struct Policy {
    PolicySettings defaults;
    std::vector<PolicyGroup> groups;
};

}  // namespace client
