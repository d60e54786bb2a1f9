// The wireless site survey: the networks that a camera sees.
#pragma once

#include <string>

#include "client/commands/wifi_security.h"
#include "client/login.h"

namespace client {

struct Site {
    std::string ssid;
    uint8_t signal;  // percent, on cameras that tell it so
    bool adHoc;
    std::optional<WifiSecurity> security;  // none: of a kind that the camera could not tell
    uint8_t channel;                       // its low four bits
};

struct Survey {
    std::vector<Site> sites;  // the strongest first
    bool isComplete;          // false: the camera sees more than the twenty it can tell
};

Survey decodeSurvey(std::span<const uint8_t> reply);

}  // namespace client
