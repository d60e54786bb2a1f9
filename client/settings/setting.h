// The model of settings: a row a setting. Whatever shows or takes one is made from these rows.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "client/settings/state.h"

namespace client {

// The settings that one request changes together.
enum class Group { Services, Clock, Password, Wifi, Basic };

struct GroupFacts {
    const char* name;           // "network services"
    const char* effect;         // what the camera does after the change
    std::chrono::seconds away;  // how long it is busy with that, or away; 0: not at all
};

// In the order of changes that keeps a camera reachable: its address last.
std::span<const Group> groupsInOrder();
const GroupFacts& factsOf(Group group);

struct Setting {
    const char* key;  // "ipv4.address"
    Group group;
    const char* summary;  // one line
    const char* values;   // what it takes, for people
    const char* quirk;    // what one would not expect of it; "" for nothing

    // Every value it takes, where those are words. Null: it takes others.
    std::vector<std::string> (*choices)() = nullptr;

    // The value as text, "" for none. Null for a secret, and for what no camera tells.
    std::string (*get)(const CameraState& state) = nullptr;

    // Takes a value over into the state that is wanted. Throws Error BadValue for one that the camera would refuse,
    // with the reason and the nearest that it takes. Null: it can only be read, or is a secret.
    void (*set)(CameraState& wanted, const std::string& text) = nullptr;

    // The same for a secret; `secret` gives the one the state has. Null: it is none.
    void (*setSecret)(CameraState& wanted, const Secret& text) = nullptr;
    const Secret* (*secret)(const CameraState& state) = nullptr;

    bool isSecret() const { return setSecret != nullptr; }
    bool isReadOnly() const { return set == nullptr && setSecret == nullptr; }
};

// Every setting, in the order in which people look at them.
std::span<const Setting> allSettings();

// Null: there is none of that key.
const Setting* findSetting(std::string_view key);

// The keys that come nearest to a mistyped one, the likeliest first; none when nothing is near.
std::vector<std::string> nearestKeys(std::string_view key);

// True when both states say the same of that setting.
bool isSame(const Setting& setting, const CameraState& one, const CameraState& other);

}  // namespace client
