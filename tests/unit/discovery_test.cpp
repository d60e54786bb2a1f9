// Discovery: who the camera is and how it is reached; and where that comes from, the start of each family.
#include <algorithm>
#include <cstdlib>
#include <limits>

#include "camera/device.h"
#include "handlers/qvp_function.h"
#include "landap/landap_function.h"
#include "support/handler_test.h"

namespace unit {
namespace {

using testing::ElementsAre;

class Discovery : public BothFamilies {
protected:
    void SetUp() override {
        BothFamilies::SetUp();
        fake::setTime(1718454896);  // 2024-06-15 12:34:56 UTC
    }

    const CommandRow& row() const { return BothFamilies::row("discovery"); }
    bool isPrimary() const { return row().family == &primaryFamily(); }
    Outcome ask() const { return call(row().handler, request(row()).bytes()); }

    // The reply of a camera that knows nothing but its interface.
    Packet bareReply() const {
        Packet packet = reply(row());
        packet.put(182, std::string("0.00"));
        packet.put(214, {static_cast<std::uint8_t>(isPrimary() ? 3 : 1), 0, 1, 0, 0, 0});
        packet.put(220, {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30});
        packet.put(290, {192, 168, 0, 20, 0, 0, 0, 0, 255, 255, 255, 0, 192, 168, 0, 1});
        return packet.put(315, std::string("20240615123456"));
    }

    void seedEverything() {
        fake::setText("INFO", "BrandName", "Example");
        fake::setText("INFO", "Product", "Sample Camera");
        fake::setText("INFO", "HWVersion", "A1");
        fake::setNumber("INFO", "Build", 4711);
        fake::setText("System", "ModelName", "SC-100");
        fake::setNumber16("System", "MainVersion", 1);
        fake::setNumber16("System", "FirmwareVersion", 5);
        fake::setText("CAMSYSTEM", "CameraName", "Front door");
        fake::setNumber("HTTP", "Port", 8080);
        fake::setNumber("NETWORK_V4", "BootProto", 1);
        fake::setNumber("DATETIME", "TimeZone", 31);
        fake::setFlag("DATETIME", "DayLightSaving", 1);
        fake::camera().dns = fake::Octets{10, 0, 0, 53};
        fake::camera().dns2 = fake::Octets{10, 0, 1, 53};
        fake::camera().wireIds = {{31, 0x0142}};
    }
};

TEST_P(Discovery, TellsWhatTheCameraIsAndHowItIsReached) {
    seedEverything();
    Packet expected = bareReply();
    expected.put(22, std::string("Example")).put(86, std::string("Sample Camera")).put(150, std::string("SC-100"));
    expected.put(182, std::string("1.05")).put(226, std::string("Front door")).put(294, {0x1F, 0x90});
    expected.put(306, {10, 0, 0, 53, 10, 0, 1, 53, 1}).put(331, {0x42, 0x01, 1});
    if (isPrimary()) expected.put(366, std::string("A1"));
    const Outcome outcome = ask();
    EXPECT_TRUE(replies(expected, outcome));
    EXPECT_TRUE(traces(row(), 1, outcome));
}

TEST_P(Discovery, OfAnEmptyStoreLeavesTheFieldsZero) { EXPECT_TRUE(replies(bareReply(), ask())); }

TEST_P(Discovery, LeavesEveryAddressThatIsNotThereZero) {
    fake::camera().interfaces["eth0"] = {};
    const Packet expected = bareReply().fill(12, 4, 0).fill(290, 16, 0);
    EXPECT_TRUE(replies(expected, ask()));
}

TEST_P(Discovery, ReadsInTheOrderOfItsFieldsAndChangesNothing) {
    ask();
    std::vector<std::string> expected{
        "net_get_ifaddr eth0",
        "cfgRead INFO BrandName",
        "cfgRead INFO Product",
        "cfgRead System ModelName",
        "cfgRead System MainVersion",
        "cfgRead System FirmwareVersion",
        "cfgRead CAMSYSTEM CameraName",
        "net_get_ifaddr eth0",
        "cfgRead HTTP Port",
        "net_get_netmask eth0",
        "net_get_gateway eth0",
        "net_get_dns",
        "net_get_dns2",
        "cfgRead NETWORK_V4 BootProto",
        "cfgRead DATETIME TimeZone",
        "get_oem_timezone_id 2 0",
        "cfgRead DATETIME DayLightSaving",
    };
    if (isPrimary()) expected.push_back("cfgRead INFO HWVersion");
    fake::Events asked = fake::events();
    EXPECT_EQ(std::erase(asked, "cfgRead INFO Build"), 1u);  // read at no fixed place, for no use
    EXPECT_THAT(asked, testing::ElementsAreArray(expected));
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

TEST_P(Discovery, LetsATextFillItsFieldWithoutANulAndCutsWhatIsLonger) {
    const struct {
        const char *section, *key;
        std::size_t at, width;
    } fields[] = {
        {"INFO", "BrandName", 22, 64},        {"INFO", "Product", 86, 64},    {"System", "ModelName", 150, 32},
        {"CAMSYSTEM", "CameraName", 226, 64}, {"INFO", "HWVersion", 366, 32},
    };
    for (const auto& field : fields) {
        if (field.at >= static_cast<std::size_t>(row().replyLength)) continue;
        for (const std::size_t length : {field.width - 1, field.width, field.width + 1, std::size_t{255}}) {
            fake::setText(field.section, field.key, std::string(length, 'x'));
            const Packet expected = bareReply().fill(field.at, std::min(length, field.width), 'x');
            EXPECT_TRUE(replies(expected, ask())) << field.key << " of " << length;
        }
        fake::erase(field.section, field.key);
    }
}

TEST_P(Discovery, WritesTheVersionWithTwoDigitsOrMoreBehindThePoint) {
    const struct {
        std::uint16_t main, firmware;
        const char* text;
    } versions[] = {{2, 0, "2.00"}, {1, 5, "1.05"}, {2, 123, "2.123"}, {65535, 65535, "65535.65535"}, {0, 99, "0.99"}};
    for (const auto& version : versions) {
        fake::setNumber16("System", "MainVersion", version.main);
        fake::setNumber16("System", "FirmwareVersion", version.firmware);
        EXPECT_TRUE(replies(bareReply().put(182, std::string(version.text)), ask())) << version.text;
    }
}

TEST_P(Discovery, SendsTheLowHalfOfThePortMostSignificantByteFirst) {
    const std::pair<std::int32_t, Bytes> ports[] = {
        {80, {0x00, 0x50}}, {8080, {0x1F, 0x90}}, {65535, {0xFF, 0xFF}}, {0x12345, {0x23, 0x45}}, {-1, {0xFF, 0xFF}}};
    for (const auto& [port, bytes] : ports) {
        fake::setNumber("HTTP", "Port", port);
        EXPECT_TRUE(replies(bareReply().put(294, bytes), ask())) << port;
    }
}

TEST_P(Discovery, ReportsDhcpForOneOnly) {
    for (const std::int32_t mode : {0, 1, 2, 3, -1, 257, 0x10000}) {
        fake::setNumber("NETWORK_V4", "BootProto", mode);
        EXPECT_TRUE(replies(bareReply().put(314, {static_cast<std::uint8_t>(mode == 1)}), ask())) << mode;
    }
}

TEST_P(Discovery, SendsTheZonesWireIdOrZeroWithoutOne) {
    fake::camera().wireIds = {{0, 7}, {5, 255}, {6, 0x1234}};
    const std::pair<std::int32_t, Bytes> zones[] = {
        {0, {7, 0}}, {5, {255, 0}}, {6, {0x34, 0x12}}, {9, {0, 0}}, {-1, {0, 0}}};
    for (const auto& [zone, bytes] : zones) {
        fake::setNumber("DATETIME", "TimeZone", zone);
        EXPECT_TRUE(replies(bareReply().put(331, bytes), ask())) << zone;
        EXPECT_THAT(fake::eventsOf({"get_oem_timezone_id"}),
                    testing::Contains("get_oem_timezone_id 2 " + std::to_string(zone)));
    }
}

TEST_P(Discovery, PassesTheDaylightSavingByteOnAsItStands) {
    for (const std::uint8_t byte : Bytes{0, 1, 2, 255}) {
        fake::setFlag("DATETIME", "DayLightSaving", byte);
        EXPECT_TRUE(replies(bareReply().put(333, {byte}), ask())) << int{byte};
    }
}

TEST_P(Discovery, TellsTheLocalTimeOfTheZoneInForceAtTheMoment) {
    const struct {
        const char* zone;
        std::time_t now;
        const char* text;
    } moments[] = {
        {"UTC0", 0, "19700101000000"},
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1718454896, "20240615143456"},
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1705322096, "20240115133456"},
        {"EST5", 1704067199, "20231231185959"},
        {"UTC0", 2147483647, "20380119031407"},
    };
    for (const auto& moment : moments) {
        setenv("TZ", moment.zone, 1);
        fake::setTime(moment.now);
        EXPECT_TRUE(replies(bareReply().put(315, std::string(moment.text)), ask())) << moment.text;
    }
}

TEST_P(Discovery, CutsTheTimeAtFourteenDigitsAndLeavesOutADateThatIsNone) {
    if (sizeof(std::time_t) < 8) GTEST_SKIP() << "no such times";
    fake::setTime(static_cast<std::time_t>(253402300800));
    EXPECT_TRUE(replies(bareReply().put(315, std::string("10000010100000")), ask()));  // year 10000
    fake::setTime(std::numeric_limits<std::time_t>::max());
    EXPECT_TRUE(replies(bareReply().fill(315, 14, 0), ask()));
}

TEST_P(Discovery, ReadsNothingBehindTheHeader) {
    Packet noise = request(row());
    noise.fill(20, 1004, 0xFF);
    EXPECT_TRUE(replies(bareReply(), call(row().handler, noise.bytes())));
}

TEST_P(Discovery, AnswersABroadcastWithItsOwnMac) {
    const Packet broadcast = request(row()).fill(6, 6, 0xFF);
    EXPECT_TRUE(replies(bareReply(), call(row().handler, broadcast.bytes())));
}

INSTANTIATE_TEST_SUITE_P(Families, Discovery, bothFamilies(), familyName);

class FamilyInit : public BothFamilies {
protected:
    static int init(const char* interface) {
        return GetParam() == &primaryFamily() ? qvp_function_init(interface) : landap_function_init(interface);
    }
};

TEST_P(FamilyInit, RefusesANullName) {
    EXPECT_EQ(init(nullptr), -1);
    EXPECT_STREQ(g_szInterfaceName, "eth0");
}

TEST_P(FamilyInit, FixesInterfaceAndMac) {
    fake::camera().interfaces["wlan0"].mac = fake::Mac{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(init("wlan0"), 0);
    EXPECT_STREQ(g_szInterfaceName, "wlan0");
    EXPECT_THAT(g_uDeviceMac, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(fake::events(), ElementsAre("net_get_hwaddr wlan0"));
}

TEST_P(FamilyInit, LeavesTheMacOfAnUnknownInterfaceZero) {
    EXPECT_EQ(init("none0"), 0);
    EXPECT_THAT(g_uDeviceMac, ElementsAre(0, 0, 0, 0, 0, 0));
}

TEST_P(FamilyInit, CutsALongNameAt63Bytes) {
    for (const std::size_t length : {62, 63, 64, 65, 300}) {
        const std::string kept(std::min<std::size_t>(length, 63), 'n');
        fake::clearEvents();
        EXPECT_EQ(init(std::string(length, 'n').c_str()), 0);
        EXPECT_EQ(std::string(g_szInterfaceName, 64), kept + std::string(64 - kept.size(), '\0')) << length;
        EXPECT_THAT(fake::events(), ElementsAre("net_get_hwaddr " + kept));
    }
}

TEST_P(FamilyInit, LeavesNothingOfALongerName) {
    EXPECT_EQ(init(std::string(63, 'n').c_str()), 0);
    EXPECT_EQ(init("eth0"), 0);
    EXPECT_EQ(std::string(g_szInterfaceName, 64), std::string("eth0") + std::string(60, '\0'));
}

INSTANTIATE_TEST_SUITE_P(Families, FamilyInit, bothFamilies(), familyName);

}  // namespace
}  // namespace unit
