// A camera of whatever values an input has for it: platform.h in memory.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/fuzz.h"
#include "platform.h"

namespace fuzz {

// Every interface that is asked for has that.
constexpr uint8_t kMac[6] = {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30};

struct Camera {
    std::vector<std::optional<std::string>> values;  // a key of the store each, in the order of its table
    std::string siteList;
    std::string group;  // of every user
    std::optional<std::array<uint8_t, 4>> address;
    int region = 1;
    int upgradeState = 0;
    int writes = 0;  // since the camera was made
    int openLists = 0;
};

Camera& camera();

// A camera that has an administrator "admin" with the password "secret", and nothing else.
void makeCamera();

size_t keyCount();

// Takes what stands in an input for a key of the store: a text, or the bytes of a number, least first.
void store(size_t key, std::string_view bytes);

// A text of the store as cfgRead hands it over; "" for none.
std::string storedText(const char* section, const char* key);

}  // namespace fuzz
