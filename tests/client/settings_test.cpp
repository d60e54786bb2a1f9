// The table of settings: what stands in it, and which values each takes.
#include <gmock/gmock.h>

#include <set>

#include "camera_state.h"
#include "client/error.h"
#include "datagrams.h"

using namespace client;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(Settings, EveryRowIsComplete) {
    std::set<std::string> keys;
    for (const Setting& setting : allSettings()) {
        EXPECT_TRUE(keys.insert(setting.key).second) << setting.key;
        EXPECT_STRNE(setting.summary, "") << setting.key;
        EXPECT_STRNE(setting.values, "") << setting.key;
        EXPECT_NE(setting.quirk, nullptr) << setting.key;
        EXPECT_EQ(setting.get != nullptr, !setting.isSecret()) << setting.key;
        EXPECT_EQ(setting.secret != nullptr, setting.isSecret()) << setting.key;
        EXPECT_FALSE(setting.set != nullptr && setting.isSecret()) << setting.key;
        EXPECT_EQ(findSetting(setting.key), &setting);
    }
    EXPECT_EQ(keys, (std::set<std::string>{"name",         "http-port",     "ipv4.method",
                                           "ipv4.address", "ipv4.gateway",  "ipv4.dns",
                                           "upnp",         "ddns.user",     "ddns.password",
                                           "ddns.host",    "pppoe.enabled", "pppoe.user",
                                           "wifi.enabled", "wifi.ssid",     "wifi.mode",
                                           "wifi.channel", "wifi.security", "wifi.wep-index",
                                           "wifi.key",     "time.zone",     "time.daylight-saving",
                                           "time.ntp",     "time.now",      "password"}));
}

TEST(Settings, AreShownAsText) {
    const Values rows = {
        {"name", "Front door"},
        {"http-port", "80"},
        {"ipv4.method", "static"},
        {"ipv4.address", "192.0.2.10/24"},
        {"ipv4.gateway", "192.0.2.1"},
        {"ipv4.dns", "192.0.2.53"},
        {"upnp", "on"},
        {"ddns.user", "user"},
        {"ddns.host", "door.example.com"},
        {"pppoe.enabled", "off"},
        {"pppoe.user", ""},
        {"wifi.enabled", "on"},
        {"wifi.ssid", "Workshop"},
        {"wifi.mode", "infrastructure"},
        {"wifi.channel", "6"},
        {"wifi.security", "wpa2-aes"},
        {"wifi.wep-index", "0"},
        {"time.zone", "UTC"},
        {"time.daylight-saving", "off"},
        {"time.ntp", "off"},
        {"time.now", "2026-01-31T23:59:58"},
    };
    const CameraState state = cameraState();
    for (const auto& [key, text] : rows) EXPECT_EQ(findSetting(key)->get(state), text) << key;
}

TEST(Settings, OddStatesAreShownToo) {
    CameraState state = cameraState();
    state.camera.netmask = {{255, 0, 255, 0}};
    state.camera.gateway = {};
    state.camera.dns = {};
    state.camera.dhcp = true;
    state.clock = ClockState{std::nullopt, 0, true, true, "ntp.example.com"};
    state.wifi->mode = 1;
    state.wifi->security = {2, 7};
    const Values rows = {{"ipv4.address", "192.0.2.10/255.0.255.0"},
                         {"ipv4.gateway", "none"},
                         {"ipv4.dns", "none"},
                         {"ipv4.method", "dhcp"},
                         {"time.zone", "unknown"},
                         {"time.now", ""},
                         {"time.daylight-saving", "on"},
                         {"time.ntp", "ntp.example.com"},
                         {"wifi.mode", "ad-hoc"},
                         {"wifi.security", "authentication 2, encryption 7"}};
    for (const auto& [key, text] : rows) EXPECT_EQ(findSetting(key)->get(state), text) << key;
    state.clock->timezone = 999;
    EXPECT_EQ(findSetting("time.zone")->get(state), "999");
}

// The bytes that a value puts into its group's request.
struct GoodValue {
    Values values;
    Group group;
    size_t offset;
    Bytes bytes;
};

static void PrintTo(const GoodValue& row, std::ostream* stream) {
    *stream << row.values[0].first << "=" << row.values[0].second.substr(0, 20) << " at " << row.offset;
}

class GoodValues : public testing::TestWithParam<GoodValue> {};

TEST_P(GoodValues, StandInTheRequest) {
    const GoodValue& row = GetParam();
    const CameraState state = cameraState();
    const CameraState wanted = withAssignments(state, assignments(row.values));
    const Bytes request = encodeGroup(row.group, state, wanted, {"admin", Secret("secret")}).bytes;
    ASSERT_GE(request.size(), row.offset + row.bytes.size());
    const auto start = request.begin() + static_cast<std::ptrdiff_t>(row.offset);
    EXPECT_EQ(Bytes(start, start + static_cast<std::ptrdiff_t>(row.bytes.size())), row.bytes);
}

static Bytes bytes(const std::string& text) { return Bytes(text.begin(), text.end()); }
static Bytes text(const std::string& text) { return bytes(text + '\0'); }

static const GoodValue kGood[] = {
    {{{"name", "Gate"}}, Group::Basic, 150, text("Gate")},
    {{{"name", ""}}, Group::Basic, 150, text("")},
    {{{"name", std::string(63, 'n')}}, Group::Basic, 150, text(std::string(63, 'n'))},
    {{{"name", "\x1b T\xc3\xbcr"}}, Group::Basic, 150, text("\x1b T\xc3\xbcr")},
    {{{"http-port", "1"}}, Group::Basic, 218, {1, 0}},
    {{{"http-port", "8087"}}, Group::Basic, 218, {0x97, 0x1F}},
    {{{"http-port", "65535"}}, Group::Basic, 218, {0xFF, 0xFF}},
    {{{"ipv4.method", "dhcp"}}, Group::Basic, 238, {1}},
    {{{"ipv4.method", "static"}}, Group::Basic, 238, {0}},
    {{{"ipv4.address", "10.1.2.3/8"}, {"ipv4.gateway", "10.9.9.9"}},
     Group::Basic,
     214,
     {10, 1, 2, 3, 80, 0, 0, 0, 255, 0, 0, 0, 10, 9, 9, 9}},
    {{{"ipv4.address", "10.1.2.2/30"}, {"ipv4.gateway", "none"}}, Group::Basic, 222, {255, 255, 255, 252}},
    {{{"ipv4.gateway", "192.0.2.254"}}, Group::Basic, 226, {192, 0, 2, 254}},
    {{{"ipv4.gateway", "none"}}, Group::Basic, 226, {0, 0, 0, 0}},
    {{{"ipv4.dns", "10.0.0.1"}}, Group::Basic, 230, {10, 0, 0, 1, 0, 0, 0, 0}},
    {{{"ipv4.dns", "10.0.0.1,10.0.0.2"}}, Group::Basic, 230, {10, 0, 0, 1, 10, 0, 0, 2}},
    {{{"ipv4.dns", "none"}}, Group::Basic, 230, {0, 0, 0, 0, 0, 0, 0, 0}},
    {{{"upnp", "off"}}, Group::Services, 279, {0, 1}},
    {{{"upnp", "yes"}}, Group::Services, 279, {1, 1}},
    {{{"ddns.user", std::string(63, 'u')}}, Group::Services, 282, text(std::string(63, 'u'))},
    {{{"ddns.password", "new"}}, Group::Services, 346, text("new")},
    {{{"ddns.host", "gate.example.com"}}, Group::Services, 410, text("gate.example.com")},
    {{{"wifi.ssid", std::string(35, 's')}}, Group::Wifi, 152, text(std::string(35, 's'))},
    {{{"wifi.mode", "ad-hoc"}}, Group::Wifi, 188, {0x31}},
    {{{"wifi.mode", "infrastructure"}}, Group::Wifi, 188, {0x30}},
    {{{"wifi.channel", "11"}}, Group::Wifi, 151, {11}},
    {{{"wifi.channel", "255"}}, Group::Wifi, 151, {255}},
    {{{"wifi.security", "none"}}, Group::Wifi, 188, {0x00, 0x00}},
    {{{"wifi.security", "wpa-wpa2-mixed"}}, Group::Wifi, 188, {0x40, 0x05}},
    {{{"wifi.key", std::string(64, 'a')}}, Group::Wifi, 320, bytes(std::string(64, 'a'))},
    {{{"wifi.security", "wep"}, {"wifi.key", "5char"}}, Group::Wifi, 188, {0x10, 0x00, 0x00}},
    {{{"wifi.key", "5char"}, {"wifi.security", "wep-shared"}}, Group::Wifi, 192, text("5char")},
    {{{"wifi.key", "0123456789abcdef0123456789"}, {"wifi.security", "wep"}, {"wifi.wep-index", "3"}},
     Group::Wifi,
     188,
     {0x10, 0x10, 0x31}},
    {{{"wifi.key", "thirteenchars"}, {"wifi.security", "wep"}, {"wifi.wep-index", "3"}},
     Group::Wifi,
     288,
     text("thirteenchars")},
    {{{"time.zone", "Asia/Tokyo"}}, Group::Clock, 166, {122, 0}},
    {{{"time.zone", "130"}}, Group::Clock, 166, {130, 0}},
    {{{"time.zone", "melbourne"}}, Group::Clock, 166, {130, 0}},
    {{{"time.daylight-saving", "on"}}, Group::Clock, 168, {1, 0}},
    {{{"time.ntp", "192.0.2.123"}},
     Group::Clock,
     169,
     bytes("\1"
           "192.0.2.123")},
    {{{"time.ntp", std::string(63, 'n')}}, Group::Clock, 170, text(std::string(63, 'n'))},
    {{{"time.ntp", "off"}}, Group::Clock, 169, bytes(std::string("\0ntp.example.com\0", 17))},
    {{{"time.now", "2026-01-31T10:20:30"}}, Group::Clock, 150, bytes("20260131102030")},
    {{{"time.now", "2026-01-31 10:20"}}, Group::Clock, 150, bytes("20260131102001")},
    {{{"time.daylight-saving", "off"}}, Group::Clock, 150, bytes("00000000000000")},
    {{{"password", "new"}}, Group::Password, 214, text("bmV3")},
    {{{"password", std::string(48, 'p')}}, Group::Password, 274, bytes("cHBw")},
};
INSTANTIATE_TEST_SUITE_P(Settings, GoodValues, testing::ValuesIn(kGood));

// A value that is refused, and what the reason holds.
struct BadValue {
    Values values;
    std::string reason;
};

static void PrintTo(const BadValue& row, std::ostream* stream) { *stream << row.values[0].first << ": " << row.reason; }

class BadValues : public testing::TestWithParam<BadValue> {};

TEST_P(BadValues, AreRefusedWithTheReason) {
    try {
        withAssignments(cameraState(), assignments(GetParam().values));
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::BadValue);
        EXPECT_THAT(error.what(), HasSubstr(GetParam().values[0].first + " "));
        EXPECT_THAT(error.what(), HasSubstr(GetParam().reason));
    }
}

static const BadValue kBad[] = {
    {{{"name", std::string(64, 'n')}}, "has 64 bytes; at most 63 fit"},
    {{{"name", std::string("a\0b", 3)}}, "holds a NUL byte"},
    {{{"http-port", "0"}}, "must be a number from 1 to 65535"},
    {{{"http-port", "65536"}}, "1 to 65535"},
    {{{"http-port", ""}}, "1 to 65535"},
    {{{"http-port", "80x"}}, "1 to 65535"},
    {{{"http-port", "-1"}}, "1 to 65535"},
    {{{"http-port", "99999999999"}}, "1 to 65535"},
    {{{"http-port", "8088"}}, "8087 and 8089 are free"},
    {{{"ipv4.method", "auto"}}, "must be 'dhcp' or 'static'"},
    {{{"ipv4.address", "10.0.0.1"}}, "such as 10.0.0.1/24"},
    {{{"ipv4.address", "10.0.0.1/"}}, "1 to 30"},
    {{{"ipv4.address", "10.0.0.1/0"}}, "1 to 30"},
    {{{"ipv4.address", "10.0.0.1/31"}}, "1 to 30"},
    {{{"ipv4.address", "10.0.0.256/24"}}, "must be an IPv4 address"},
    {{{"ipv4.address", "10.0.0.0/24"}}, "is not the address of a host"},
    {{{"ipv4.address", "10.0.0.255/24"}}, "is not the address of a host"},
    {{{"ipv4.address", "224.0.0.1/24"}}, "is not the address of a host"},
    {{{"ipv4.gateway", ""}}, "must be an IPv4 address"},
    {{{"ipv4.gateway", "router"}}, "must be an IPv4 address"},
    {{{"ipv4.dns", ""}}, "must be an IPv4 address"},
    {{{"ipv4.dns", "10.0.0.1,"}}, "must be an IPv4 address"},
    {{{"ipv4.dns", "10.0.0.1,10.0.0.2,10.0.0.3"}}, "more than the two"},
    {{{"upnp", "maybe"}}, "must be 'on' or 'off'"},
    {{{"ddns.user", std::string(64, 'u')}}, "at most 63 fit"},
    {{{"ddns.password", std::string(64, 'p')}}, "at most 63 fit"},
    {{{"ddns.host", std::string(64, 'h')}}, "at most 63 fit"},
    {{{"pppoe.enabled", "on"}}, "can only be read"},
    {{{"pppoe.user", "x"}}, "can only be read"},
    {{{"wifi.enabled", "on"}}, "can only be read"},
    {{{"ipv4.gateway", "10.9.9.9"}}, "is not in the network of ipv4.address 192.0.2.10"},
    {{{"ipv4.gateway", "255.255.255.255"}}, "is not the address of a host"},
    {{{"ipv4.dns", "192.0.2.1,0.0.0.0"}}, "is not the address of a host"},
    {{{"password", ""}}, "must not be empty"},
    {{{"time.now", "2026-02-31T10:20:30"}}, "is no time of the calendar"},
    {{{"time.now", "2026-01-31T10:20:30"}, {"time.ntp", "ntp"}}, "does not last while the camera follows ntp"},
    {{{"wifi.ssid", std::string(36, 's')}}, "at most 35 fit"},
    {{{"wifi.mode", "mesh"}}, "'infrastructure' or 'ad-hoc'"},
    {{{"wifi.channel", "0"}}, "1 to 255"},
    {{{"wifi.channel", "256"}}, "1 to 255"},
    {{{"wifi.security", "wpa3"}}, "must be one of none, wep, "},
    {{{"wifi.wep-index", "4"}}, "0 to 3"},
    {{{"wifi.key", "1234567"}}, "has 7 bytes; it must have 8 to 63"},
    {{{"wifi.key", std::string(64, 'g')}}, "must be hexadecimal digits"},
    {{{"wifi.key", "fourteen chars"}, {"wifi.security", "wep"}}, "a WEP key has 5 or 13"},
    {{{"wifi.key", "12345678"}, {"wifi.security", "none"}}, "is none, which has no key"},
    {{{"time.zone", "Mars/Olympus_Mons"}}, "is no time zone that cameras know"},
    {{{"time.zone", "0"}}, "is no time zone"},
    {{{"time.daylight-saving", ""}}, "'on' or 'off'"},
    {{{"time.ntp", ""}}, "or 'off'"},
    {{{"time.ntp", std::string(64, 'n')}}, "at most 63 fit"},
    {{{"time.now", "yesterday"}}, "such as 2026-01-31T10:20:30"},
    {{{"time.now", "2026-01-31"}}, "such as"},
    {{{"time.now", "2026-01-31T10:20:30Z"}}, "such as"},
    {{{"time.now", "2026-01-31X10:20:30"}}, "such as"},
    {{{"time.now", "2026-1a-31T10:20:30"}}, "such as"},
    {{{"time.now", "1969-12-31T10:20:30"}}, "1970 to 2100"},
    {{{"time.now", "2101-01-01T10:20:30"}}, "1970 to 2100"},
    {{{"time.now", "2026-13-01T10:20:30"}}, "is no time of the calendar"},
    {{{"time.now", "2026-01-32T10:20:30"}}, "is no time of the calendar"},
    {{{"time.now", "2026-01-31T24:20:30"}}, "is no time of the calendar"},
    {{{"time.now", "2026-01-31T10:60:30"}}, "is no time of the calendar"},
    {{{"time.now", "2026-01-31T10:20:60"}}, "is no time of the calendar"},
    {{{"time.now", "2026-01-31T00:20:30"}}, "the nearest is 2026-01-30T23:59:59"},
    {{{"time.now", "2026-01-31T10:00:30"}}, "the nearest is 2026-01-31T09:59:59"},
    {{{"time.now", "2026-01-31T10:00:45"}}, "the nearest is 2026-01-31T10:01:01"},
    {{{"time.now", "2026-01-31T10:20:00"}}, "the nearest is 2026-01-31T10:19:59"},
    {{{"time.now", "2026-01-31T00:00:00"}}, "the nearest is 2026-01-30T23:59:59"},
    {{{"password", std::string(49, 'p')}}, "at most 48 fit"},
    {{{"password", std::string("p\0", 2)}}, "holds a NUL byte"},
    {{{"ipv4.address", "10.0.0.1/24"}, {"ipv4.method", "dhcp"}}, "exclude each other"},
    {{{"ipv4.gateway", "10.0.0.1"}, {"ipv4.method", "dhcp"}}, "exclude each other"},
    {{{"ipv4.dns", "none"}, {"ipv4.method", "dhcp"}}, "exclude each other"},
    {{{"name", "A"}, {"upnp", "on"}, {"name", "B"}}, "is given twice"},
    {{{"name", "A"}, {"name", "A"}}, "is given twice"},
};
INSTANTIATE_TEST_SUITE_P(Settings, BadValues, testing::ValuesIn(kBad));

TEST(Settings, NoReasonHoldsASecret) {
    for (const Setting& setting : allSettings()) {
        if (!setting.isSecret()) continue;
        for (const std::string& secret : {"MARKED" + std::string(70, '-'), std::string("MARKED\0", 7)}) {
            try {
                withAssignments(cameraState(), assignments({{setting.key, secret}}));
                ADD_FAILURE() << setting.key;
            } catch (const Error& error) {
                EXPECT_EQ(std::string(error.what()).find("MARKED"), std::string::npos) << error.what();
            }
        }
    }
}

TEST(Settings, TheNearestKeysOfAMistypedOne) {
    EXPECT_EQ(nearestKeys("nam").front(), "name");
    EXPECT_EQ(nearestKeys("Name").front(), "name");
    EXPECT_EQ(nearestKeys("ipv4.adress").front(), "ipv4.address");
    EXPECT_EQ(nearestKeys("time.zome").front(), "time.zone");
    EXPECT_THAT(nearestKeys("ddns"), ElementsAre("ddns.user", "ddns.password", "ddns.host", "upnp"));
    EXPECT_EQ(nearestKeys("ssid").front(), "wifi.ssid");
    EXPECT_THAT(nearestKeys("frobnicate"), ElementsAre());
    EXPECT_THAT(nearestKeys(""), ElementsAre());
}
