// What is reckoned of many cameras. What is said to one is tested with the session, and with real cameras.
#include "client/fleet/camera_job.h"

#include <gmock/gmock.h>

#include "camera_state.h"

using namespace client;
using namespace std::chrono_literals;

TEST(CameraJob, TimeIsThatOfTheFirstAndThenOfTheBusiestHand) {
    EXPECT_EQ(timeFor({}, 8), 0s);
    EXPECT_EQ(timeFor({10s}, 8), 10s);
    EXPECT_EQ(timeFor({10s, 10s, 10s}, 1), 30s);
    EXPECT_EQ(timeFor({10s, 10s, 10s}, 2), 20s);
    EXPECT_EQ(timeFor({10s, 3s, 3s, 13s}, 2), 26s);
}

static std::optional<std::string> restorable(const char* key, const CameraState& state = cameraState()) {
    return restorableValue(*findSetting(key), state);
}

TEST(CameraJob, WhatACameraWouldNotTakeCannotBePutBack) {
    EXPECT_EQ(restorable("name"), "Front door");
    EXPECT_EQ(restorable("ipv4.address"), "192.0.2.10/24");
    EXPECT_EQ(restorable("password"), std::nullopt);
    EXPECT_EQ(restorable("wifi.enabled"), std::nullopt);
    CameraState state = cameraState();
    state.clock->timezone = 0;
    EXPECT_EQ(restorable("time.zone", state), std::nullopt);
    state.camera.address = {};
    EXPECT_EQ(restorable("ipv4.address", state), std::nullopt);
}
