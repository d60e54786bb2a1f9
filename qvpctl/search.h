// Finding the cameras on the local networks.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "qvpctl/camera.h"

struct Search {
    std::string interface;           // empty: every one that can broadcast
    std::chrono::milliseconds wait;  // how long replies are taken
};

// Hands each camera to `found` once, as it answers; returns how many there were. Throws Failure when no request could
// be sent.
size_t searchCameras(const Search& search, const std::function<void(const Camera&)>& found);
