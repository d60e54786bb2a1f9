// What is reckoned of many cameras. What is said to one is tested with the session, and with real cameras.
#include "client/fleet/camera_job.h"

#include <gmock/gmock.h>

#include "camera_state.h"
#include "client/error.h"
#include "fake_link.h"

using namespace client;
using testing::ElementsAre;
using testing::IsEmpty;
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

// A camera of another network: its reports come, its answers do not.
class OnlyHeardJob : public testing::Test {
protected:
    CameraPlan look(const Values& values) {
        CameraJob job(link_, Family::Primary, {1s, 0}, {{"admin", Secret("secret")}}, [](const std::string&) {});
        return job.look(found_, assignments(values));
    }

    FakeLink link_;
    Found found_{cameraState().camera, nearInterface(), false, false, false, false, false};
};

static std::vector<std::string> changesOf(const CameraPlan& plan) {
    std::vector<std::string> texts;
    for (const SettingChange& one : plan.changes) {
        texts.push_back(std::string(one.setting->key) + ": " + one.before.value_or("?") + " -> " +
                        one.after.value_or("?"));
    }
    return texts;
}

TEST_F(OnlyHeardJob, WhatItsReportDoesNotTellCountsAsAChange) {
    const CameraPlan plan = look({{"name", "Gate"},
                                  {"ipv4.address", "192.0.2.77/24"},
                                  {"http-port", "80"},
                                  {"upnp", "on"},
                                  {"wifi.ssid", "Hall"}});
    EXPECT_THAT(plan.groups, ElementsAre(Group::Services, Group::Wifi, Group::Basic));
    EXPECT_THAT(changesOf(plan), ElementsAre("name: Front door -> Gate", "ipv4.address: 192.0.2.10/24 -> 192.0.2.77/24",
                                             "http-port: ? -> 80", "upnp: ? -> on", "wifi.ssid: ? -> Hall"));
    EXPECT_TRUE(plan.isOnlyHeard());
    EXPECT_EQ(plan.wanted.camera.name, "Gate");
    EXPECT_THAT(link_.sent, IsEmpty());
}

TEST_F(OnlyHeardJob, WhatItsReportTellsIsNoChange) {
    const CameraPlan plan = look({{"name", "Front door"}, {"ipv4.address", "192.0.2.10/24"}});
    EXPECT_THAT(changesOf(plan), IsEmpty());
}

TEST_F(OnlyHeardJob, NeedsAnAddressAndCannotBeNear) {
    EXPECT_THROW(look({{"name", "Gate"}}), Error);
    found_.isNear = true;
    EXPECT_THROW(look({{"ipv4.address", "192.0.2.77/24"}}), Error);
}
