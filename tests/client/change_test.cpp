// From assignments to the requests that make them so.
#include "client/settings/change.h"

#include <gmock/gmock.h>

#include "camera_state.h"
#include "client/error.h"
#include "client/time_zones.h"
#include "datagrams.h"

using namespace client;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

static const Login kLogin{"admin", Secret("secret")};

static std::vector<Group> changedBy(const Values& values) {
    const CameraState state = cameraState();
    return changedGroups(state, withAssignments(state, assignments(values)));
}

static std::string faultOf(Group group, const CameraState& state, const CameraState& wanted) try {
    encodeGroup(group, state, wanted, kLogin);
    return "";
} catch (const Error& error) {
    EXPECT_EQ(error.kind(), ErrorKind::BadValue);
    return error.what();
}

TEST(Change, OnlyWhatDiffersIsChanged) {
    EXPECT_THAT(changedBy({}), IsEmpty());
    EXPECT_THAT(changedBy({{"name", "Front door"},
                           {"ipv4.address", "192.0.2.10/24"},
                           {"upnp", "on"},
                           {"wifi.ssid", "Workshop"},
                           {"wifi.key", "correct horse battery"},
                           {"ddns.password", "old"},
                           {"time.zone", "Etc/UTC"}}),
                IsEmpty());
    EXPECT_THAT(changedBy({{"name", "Gate"}}), ElementsAre(Group::Basic));
    EXPECT_THAT(changedBy({{"ipv4.address", "192.0.2.10/25"}}), ElementsAre(Group::Basic));
    EXPECT_THAT(changedBy({{"wifi.key", "another key"}}), ElementsAre(Group::Wifi));
    EXPECT_THAT(changedBy({{"ddns.password", "new"}}), ElementsAre(Group::Services));
    EXPECT_THAT(changedBy({{"password", "new"}}), ElementsAre(Group::Password));
}

TEST(Change, ATimeIsSetAlsoWhenItIsTheSame) {
    EXPECT_THAT(changedBy({{"time.now", "2026-01-31T23:59:58"}}), ElementsAre(Group::Clock));
    EXPECT_THAT(changedBy({{"time.now", "now"}}), ElementsAre(Group::Clock));
    const CameraState state = cameraState();
    const CameraState wanted = withAssignments(state, assignments({{"time.now", "2026-01-31T10:20:30"}}));
    EXPECT_FALSE(isSame(*findSetting("time.now"), state, wanted));
    EXPECT_EQ(findSetting("time.now")->get(wanted), "2026-01-31T10:20:30");
}

TEST(Change, TheAddressComesLast) {
    EXPECT_THAT(changedBy({{"ipv4.address", "10.0.0.2/8"},
                           {"ipv4.gateway", "none"},
                           {"wifi.ssid", "Other"},
                           {"password", "new"},
                           {"time.ntp", "ntp"},
                           {"upnp", "off"}}),
                ElementsAre(Group::Services, Group::Clock, Group::Password, Group::Wifi, Group::Basic));
}

TEST(Change, WhatWasNotReadIsNotChanged) {
    CameraState state = cameraState();
    state.wifi.reset();
    state.clock.reset();
    state.services.reset();
    EXPECT_THAT(changedGroups(state, withAssignments(state, assignments({{"name", "Gate"}}))),
                ElementsAre(Group::Basic));
}

TEST(Change, AnAddressMakesTheMethodStatic) {
    CameraState state = cameraState();
    state.camera.dhcp = true;
    for (const auto& [key, value] :
         Values{{"ipv4.address", "192.0.2.11/24"}, {"ipv4.gateway", "none"}, {"ipv4.dns", "none"}}) {
        EXPECT_FALSE(withAssignments(state, assignments({{key, value}})).camera.dhcp) << key;
    }
    EXPECT_TRUE(withAssignments(state, assignments({{"name", "Gate"}})).camera.dhcp);
    EXPECT_FALSE(withAssignments(state, assignments({{"ipv4.address", "192.0.2.11/24"}, {"ipv4.method", "static"}}))
                     .camera.dhcp);
}

TEST(Change, OpcodeAndLengthOfEachGroup) {
    const CameraState state = cameraState();
    const CameraState wanted = withAssignments(state, assignments({{"password", "new"}}));
    const std::tuple<Group, uint16_t, size_t> rows[] = {
        {Group::Services, 0x00A7, 675}, {Group::Clock, 0x00AD, 186}, {Group::Password, 0x00A4, 278},
        {Group::Wifi, 0x00A9, 402},     {Group::Basic, 0x00A2, 239},
    };
    for (const auto& [group, opcode, length] : rows) {
        const GroupRequest request = encodeGroup(group, state, wanted, kLogin);
        EXPECT_EQ(request.opcode, opcode);
        EXPECT_EQ(request.bytes.size(), length);
        EXPECT_EQ(Bytes(request.bytes.begin(), request.bytes.begin() + 22), Bytes(22));
        EXPECT_EQ(Bytes(request.bytes.begin() + 22, request.bytes.begin() + 30),
                  (Bytes{'Y', 'W', 'R', 't', 'a', 'W', '4', '='}));
    }
}

TEST(Change, WhatIsNotNamedTravelsAsItWas) {
    const CameraState state = cameraState();
    Bytes expected = protectedBytes(239);
    putText(expected, 150, "Gate");
    put(expected, 214, {192, 0, 2, 10, 80, 0, 0, 0, 255, 255, 255, 0, 192, 0, 2, 1, 192, 0, 2, 53});
    const CameraState wanted = withAssignments(state, assignments({{"name", "Gate"}}));
    EXPECT_EQ(encodeGroup(Group::Basic, state, wanted, kLogin).bytes, expected);
}

TEST(Change, DynamicDnsTravelsWithTheValueOfUpnp) {
    for (const bool upnp : {false, true}) {
        CameraState state = cameraState();
        state.services->upnp = upnp;
        const CameraState wanted = withAssignments(state, assignments({{"ddns.host", "gate.example.com"}}));
        Bytes expected = protectedBytes(675);
        put(expected, 279, {static_cast<uint8_t>(upnp ? 1 : 0), 3});
        putText(expected, 282, "user");
        putText(expected, 346, "old");
        putText(expected, 410, "gate.example.com");
        EXPECT_EQ(encodeGroup(Group::Services, state, wanted, kLogin).bytes, expected);
    }
}

TEST(Change, UpnpAloneLeavesDynamicDnsAlone) {
    const CameraState state = cameraState();
    Bytes expected = protectedBytes(675);
    put(expected, 279, {0, 1});
    const CameraState wanted = withAssignments(state, assignments({{"upnp", "off"}}));
    EXPECT_EQ(encodeGroup(Group::Services, state, wanted, kLogin).bytes, expected);
}

TEST(Change, SecurityWithoutAFittingKeyIsRefused) {
    CameraState state = cameraState();
    state.wifi->preSharedKey = Secret("");
    EXPECT_THAT(faultOf(Group::Wifi, state, withAssignments(state, assignments({{"wifi.ssid", "Other"}}))),
                HasSubstr("wifi.security wpa2-aes needs a wifi.key"));
    EXPECT_THAT(faultOf(Group::Wifi, state, withAssignments(state, assignments({{"wifi.security", "wep"}}))),
                HasSubstr("wifi.security wep needs a wifi.key"));
    EXPECT_EQ(faultOf(Group::Wifi, state, withAssignments(state, assignments({{"wifi.security", "none"}}))), "");
    EXPECT_EQ(faultOf(Group::Wifi, state, withAssignments(state, assignments({{"wifi.key", "long enough"}}))), "");
}

TEST(Change, AClockWithAnUnknownZoneNeedsOne) {
    CameraState state = cameraState();
    state.clock->timezone = 0;
    EXPECT_THAT(faultOf(Group::Clock, state, withAssignments(state, assignments({{"time.ntp", "ntp"}}))),
                HasSubstr("time.zone is needed"));
    EXPECT_THAT(faultOf(Group::Clock, state, withAssignments(state, assignments({{"time.now", "now"}}))),
                HasSubstr("time.zone is needed"));
    EXPECT_EQ(
        faultOf(Group::Clock, state, withAssignments(state, assignments({{"time.ntp", "ntp"}, {"time.zone", "1"}}))),
        "");
}

// A zone in which neither this hour nor this minute is 0, which no camera would take.
static const TimeZone& zoneOfNow() {
    for (const char* name : {"Europe/London", "Asia/Kolkata", "Asia/Tokyo", "Australia/Darwin"}) {
        const TimeZone* zone = parseTimeZone(name);
        const std::string now = *localTimeIn(*zone, true, std::chrono::system_clock::now() + std::chrono::minutes(2));
        if (now.substr(8, 2) != "00" && now.substr(10, 2) > "03") return *zone;
    }
    throw std::logic_error("no such zone");
}

TEST(Change, NowIsThisMachinesTimeInTheCamerasZone) {
    const TimeZone& zone = zoneOfNow();
    CameraState state = cameraState();
    state.clock->timezone = zone.id;
    state.clock->daylightSaving = true;
    const CameraState wanted = withAssignments(state, assignments({{"time.now", "now"}}));
    const auto before = localTimeIn(zone, true, std::chrono::system_clock::now());
    const Bytes request = encodeGroup(Group::Clock, state, wanted, kLogin).bytes;
    const auto after = localTimeIn(zone, true, std::chrono::system_clock::now() + std::chrono::seconds(1));
    const std::string time(request.begin() + 150, request.begin() + 164);
    EXPECT_GE(time, *before);
    EXPECT_LE(time, *after);
}
