// Set-up in one request: camera name, web server port, IPv4 addressing.
#include "support/handler_test.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SetBasicInfo : public BothFamilies {
protected:
    const CommandRow& row() const { return BothFamilies::row("set_basic_info"); }

    // Camera "Yard", port 8000, a static address.
    Packet staticSetup() const {
        Packet packet = request(row());
        packet.put(150, std::string("Yard")).put(214, {10, 0, 0, 7}).put(218, {0x40, 0x1F, 0xEE, 0xEE});
        packet.put(222, {255, 255, 0, 0, 10, 0, 0, 1, 10, 0, 0, 53, 10, 0, 1, 53});
        return packet.put(238, {0});
    }

    Packet accepted() const { return reply(row()).put(26, {2, 0, 0, 0, 0x10, 0x27, 0, 0}); }
    Packet refused(std::uint8_t code) const { return reply(row()).put(16, {2, 0}).put(22, {code, 0, 0, 0}); }
    Outcome send(const Packet& packet) const { return call(row().handler, packet.bytes()); }

    void expectRefused(const Packet& packet, std::uint8_t code, const std::string& what) const {
        const Outcome outcome = send(packet);
        EXPECT_TRUE(replies(refused(code), outcome)) << what;
        EXPECT_TRUE(traces(row(), 1, outcome)) << what;
        EXPECT_THAT(fake::writes(), IsEmpty()) << what;
        EXPECT_THAT(raisedFlags(), IsEmpty()) << what;
    }
};

TEST_P(SetBasicInfo, StoresAStaticSetupInOrder) {
    const Outcome outcome = send(staticSetup());
    EXPECT_TRUE(replies(accepted(), outcome));
    EXPECT_TRUE(traces(row(), 1, outcome));
    EXPECT_THAT(
        fake::writes(),
        ElementsAre(R"(cfgWrite CAMSYSTEM CameraName "Yard" 1)", "cfgWrite HTTP Port number 8000 1",
                    "cfgWrite NETWORK_V4 BootProto number 0 1", R"(cfgWrite NETWORK_V4 IP "10.0.0.7" 1)",
                    R"(cfgWrite NETWORK_V4 SubnetMask "255.255.0.0" 1)", R"(cfgWrite NETWORK_V4 Gateway "10.0.0.1" 1)",
                    R"(cfgWrite NETWORK_V4 DNS0 "10.0.0.53" 1)", R"(cfgWrite NETWORK_V4 DNS1 "10.0.1.53" 1)"));
    EXPECT_THAT(raisedFlags(), ElementsAre("g_nDeviceNameReset=1", "g_nWebServerReset=1", "g_nNetworkReset=1"));
    EXPECT_THAT(fake::commands(), IsEmpty());
}

TEST_P(SetBasicInfo, LeavesTheAddressesAloneForDhcp) {
    EXPECT_TRUE(replies(accepted(), send(staticSetup().put(238, {1}))));
    EXPECT_THAT(fake::writes(),
                ElementsAre(R"(cfgWrite CAMSYSTEM CameraName "Yard" 1)", "cfgWrite HTTP Port number 8000 1",
                            "cfgWrite NETWORK_V4 BootProto number 1 1"));
    EXPECT_THAT(raisedFlags(), ElementsAre("g_nDeviceNameReset=1", "g_nWebServerReset=1", "g_nNetworkReset=1"));
}

TEST_P(SetBasicInfo, TakesEveryPortButTwo) {
    const struct {
        Bytes bytes;
        int port;  // 0: refused
    } rows[] = {
        {{0x00, 0x00}, 0},    {{0x01, 0x00}, 1},     {{0x50, 0x00}, 80},  {{0x97, 0x1F}, 8087},  {{0x98, 0x1F}, 0},
        {{0x99, 0x1F}, 8089}, {{0x1F, 0x98}, 38943}, {{0x00, 0x01}, 256}, {{0xFF, 0xFF}, 65535}, {{0x00, 0x80}, 32768},
    };
    for (const auto& port : rows) {
        SetUp();
        const Packet packet = staticSetup().put(218, port.bytes);
        if (port.port == 0) {
            expectRefused(packet, 3, "port");
            continue;
        }
        EXPECT_TRUE(replies(accepted(), send(packet))) << port.port;
        EXPECT_EQ(fake::number("HTTP", "Port"), port.port);
    }
}

TEST_P(SetBasicInfo, TakesTwoAddressModes) {
    for (const std::uint8_t mode : Bytes{2, 3, 0x80, 0xFF}) expectRefused(staticSetup().put(238, {mode}), 8, "mode");
    for (const std::uint8_t mode : Bytes{0, 1}) EXPECT_TRUE(replies(accepted(), send(staticSetup().put(238, {mode}))));
}

TEST_P(SetBasicInfo, ChecksThePortBeforeTheMode) {
    expectRefused(staticSetup().put(218, {0x98, 0x1F}).put(238, {2}), 3, "8088");
    expectRefused(staticSetup().put(218, {0, 0}).put(238, {2}), 3, "0");
}

TEST_P(SetBasicInfo, StoresUpTo63BytesOfTheName) {
    const std::string odd = "a \"b\" \\ $c \xC3\xA4 \x01";
    const std::pair<std::string, std::string> names[] = {
        {"", ""},
        {odd, odd},
        {std::string(62, 'n'), std::string(62, 'n')},
        {std::string(63, 'n'), std::string(63, 'n')},
        {std::string(64, 'n'), std::string(63, 'n')},
        {std::string("ab\0cd", 5), "ab"},
    };
    for (const auto& [given, stored] : names) {
        EXPECT_TRUE(replies(accepted(), send(staticSetup().fill(150, 64, 0).put(150, given))));
        EXPECT_EQ(fake::text("CAMSYSTEM", "CameraName"), stored);
        EXPECT_THAT(fake::unclearedWrites(), IsEmpty());
    }
}

TEST_P(SetBasicInfo, DoesNotJudgeAddresses) {
    Packet packet = staticSetup();
    packet.fill(214, 4, 0).fill(222, 4, 0xFF).fill(226, 12, 0);
    EXPECT_TRUE(replies(accepted(), send(packet)));
    EXPECT_EQ(fake::text("NETWORK_V4", "IP"), "0.0.0.0");
    EXPECT_EQ(fake::text("NETWORK_V4", "SubnetMask"), "255.255.255.255");
    EXPECT_EQ(fake::text("NETWORK_V4", "DNS1"), "0.0.0.0");
}

TEST_P(SetBasicInfo, AnswersTheSameWhenTheStoreRefuses) {
    for (int nth = 1; nth <= 8; ++nth) fake::failCall("cfgWrite", nth, 0x7F);
    EXPECT_TRUE(replies(accepted(), send(staticSetup())));
    EXPECT_EQ(fake::writes().size(), 8u);
    EXPECT_THAT(raisedFlags(), testing::SizeIs(3));
}

TEST_P(SetBasicInfo, ReadsNothingButTheCredentials) {
    send(staticSetup());
    EXPECT_THAT(fake::eventsOf({"cfgRead"}),
                ElementsAre("cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1"));
}

INSTANTIATE_TEST_SUITE_P(Families, SetBasicInfo, bothFamilies(), familyName);

}  // namespace
}  // namespace unit
