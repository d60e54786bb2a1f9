// Addresses: of interfaces from the kernel, of gateways and name servers from text files.
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cstdlib>
#include <optional>

#include "network/network_files.h"
#include "platform.h"
#include "store_fixture.h"
#include "wireless/wireless_interface.h"

using Bytes4 = std::array<uint8_t, 4>;
using Address = std::optional<Bytes4>;

// The four bytes as the kernel prints them: the number that they are on this machine.
static std::string word(Bytes4 bytes) {
    char text[9];
    snprintf(text, sizeof text, "%08X", std::bit_cast<uint32_t>(bytes));
    return text;
}

static std::string route(const char* interface, Bytes4 destination, Bytes4 gateway, const char* flags, int metric,
                         Bytes4 mask) {
    return std::string(interface) + "\t" + word(destination) + "\t" + word(gateway) + "\t" + flags + "\t0\t0\t" +
           std::to_string(metric) + "\t" + word(mask) + "\t0\t0\t0      \n";
}

static const std::string kRouteHeading =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT    \n";
static constexpr Bytes4 kAny = {0, 0, 0, 0};

static Address gatewayFrom(const std::string& routes, const char* interface) {
    TemporaryFolder folder;
    writeFile(folder / "route", routes);
    Bytes4 address = {9, 8, 7, 6};
    const std::string path = (folder / "route").string();
    if (gatewayFromRoutes(path.c_str(), interface, address.data()) == 0) return address;
    EXPECT_EQ(address, (Bytes4{9, 8, 7, 6}));
    return std::nullopt;
}

TEST(Gateway, IsTheBestDefaultRoutesOfTheInterface) {
    const std::string routes = kRouteHeading +                                               //
                               route("eth0", kAny, {192, 168, 1, 254}, "0003", 200, kAny) +  //
                               route("eth0", kAny, {192, 168, 1, 1}, "0003", 100, kAny) +    //
                               route("eth0", kAny, {192, 168, 1, 2}, "0003", 100, kAny) +    //
                               route("eth1", kAny, {10, 0, 0, 1}, "0003", 50, kAny) +        //
                               route("eth0", {192, 168, 1, 0}, kAny, "0001", 0, {255, 255, 255, 0}) +
                               route("eth2", {10, 9, 0, 0}, {10, 0, 0, 2}, "0003", 0, {255, 255, 0, 0}) +
                               route("eth2", kAny, {10, 0, 0, 3}, "0003", 0, {128, 0, 0, 0}) +  //
                               route("eth3", kAny, kAny, "0001", 0, kAny) +                     //
                               route("eth4", kAny, {10, 0, 0, 4}, "0002", 0, kAny) +            //
                               route("eth5", kAny, {10, 0, 0, 5}, "0203", 0, kAny) +            //
                               route("eth6", kAny, {10, 0, 0, 6}, "0003", 0, kAny);
    EXPECT_EQ(gatewayFrom(routes, "eth0"), (Bytes4{192, 168, 1, 1}));
    EXPECT_EQ(gatewayFrom(routes, "eth1"), (Bytes4{10, 0, 0, 1}));
    EXPECT_EQ(gatewayFrom(routes, "eth6"), (Bytes4{10, 0, 0, 6}));
    for (const char* none : {"eth2", "eth3", "eth4", "eth5", "eth7", "eth", "eth00", "", "Iface"}) {
        EXPECT_EQ(gatewayFrom(routes, none), std::nullopt) << none;
    }
}

TEST(Gateway, IsNoneWhereTheFileTellsNone) {
    for (const std::string& routes : {std::string(), kRouteHeading, std::string("eth0\n\neth0 0 0\n\xFF")}) {
        EXPECT_EQ(gatewayFrom(routes, "eth0"), std::nullopt);
    }
    Bytes4 address = {};
    EXPECT_EQ(gatewayFromRoutes("/nowhere/route", "eth0", address.data()), -1);
    EXPECT_EQ(net_get_gateway(nullptr, address.data()), -1);
    EXPECT_EQ(net_get_gateway("eth0", nullptr), -1);
    EXPECT_EQ(net_get_gateway("none0", address.data()), -1);
}

static Address nameServer(const std::string& file, int index) {
    TemporaryFolder folder;
    writeFile(folder / "resolv.conf", file);
    Bytes4 address = {9, 8, 7, 6};
    const std::string path = (folder / "resolv.conf").string();
    if (nameServerFromFile(path.c_str(), index, address.data()) == 0) return address;
    EXPECT_EQ(address, (Bytes4{9, 8, 7, 6}));
    return std::nullopt;
}

TEST(NameServers, AreTheFirstTwoWithIpv4) {
    const struct {
        const char* file;
        Address first, second;
    } rows[] = {
        {"nameserver 192.0.2.1\nnameserver 192.0.2.2\nnameserver 192.0.2.3\n", Bytes4{192, 0, 2, 1},
         Bytes4{192, 0, 2, 2}},
        {"search lan\n# nameserver 1.1.1.1\n;nameserver 2.2.2.2\noptions a\nnameserver\t10.0.0.1 \r\n",
         Bytes4{10, 0, 0, 1},
         {}},
        {"nameserver fe80::1\n nameserver   10.0.0.1\nnameserver ::1\nnameserver 255.255.255.255", Bytes4{10, 0, 0, 1},
         Bytes4{255, 255, 255, 255}},
        {"nameserver 10.0.0.256\nnameserver 10.0.0\nnameserver 10.0.0.1.2\nnameserver\nnameserverx 1.2.3.4\n", {}, {}},
        {"NAMESERVER 10.0.0.1\nnameserver name.example\nserver 10.0.0.1\n", {}, {}},
        {"nameserver 10.0.0.1 # inside\nnameserver 10.0.0.2;\n", Bytes4{10, 0, 0, 1}, {}},
        {"", {}, {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(nameServer(row.file, 0), row.first) << row.file;
        EXPECT_EQ(nameServer(row.file, 1), row.second) << row.file;
    }
    Bytes4 address = {};
    EXPECT_EQ(nameServerFromFile("/nowhere/resolv.conf", 0, address.data()), -1);
    EXPECT_EQ(net_get_dns(nullptr), -1);
    EXPECT_EQ(net_get_dns2(nullptr), -1);
}

TEST(NameServers, AreThoseOfTheSystem) {
    TemporaryFolder etc;
    writeFile(etc / "resolv.conf", "nameserver 192.0.2.1\nnameserver 192.0.2.2\n");
    if (!withPrivateEtc(etc.path(), [] {
            Bytes4 first = {}, second = {};
            EXPECT_EQ(net_get_dns(first.data()), 0);
            EXPECT_EQ(net_get_dns2(second.data()), 0);
            EXPECT_EQ(first, (Bytes4{192, 0, 2, 1}));
            EXPECT_EQ(second, (Bytes4{192, 0, 2, 2}));
        })) {
        GTEST_SKIP() << "no private /etc on this machine";
    }
}

TEST(Interface, LoopbackHasItsAddresses) {
    Bytes4 address = {}, mask = {};
    std::array<uint8_t, 6> mac = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(net_get_ifaddr("lo", address.data()), 0);
    EXPECT_EQ(address, (Bytes4{127, 0, 0, 1}));
    EXPECT_EQ(net_get_netmask("lo", mask.data()), 0);
    EXPECT_EQ(mask, (Bytes4{255, 0, 0, 0}));
    EXPECT_EQ(net_get_hwaddr("lo", mac.data()), 0);
    EXPECT_EQ(mac, (std::array<uint8_t, 6>{}));
}

// In a network of its own: two ends of a cable, one of them without an address.
TEST(Interface, HasWhatTheKernelTells) {
    constexpr int kNotAllowed = 77;
    const int status = inChild([] {
        const uid_t user = geteuid();
        if (unshare(user == 0 ? CLONE_NEWNET : CLONE_NEWUSER | CLONE_NEWNET) != 0) _exit(kNotAllowed);
        const int made = system(
            "{ ip link add e0 address 02:00:5e:00:53:01 type veth peer name e1 address 02:00:5e:00:53:02 &&"
            " ip address add 192.0.2.130/25 dev e0 && ip link set e0 up && ip link set e1 up &&"
            " ip route add default via 192.0.2.129 dev e0 metric 300 &&"
            " ip route add default via 192.0.2.254 dev e0 metric 20; } 2>/dev/null");
        if (made != 0) _exit(kNotAllowed);
        Bytes4 address = {}, mask = {}, gateway = {};
        std::array<uint8_t, 6> mac = {};
        EXPECT_EQ(net_get_ifaddr("e0", address.data()), 0);
        EXPECT_EQ(address, (Bytes4{192, 0, 2, 130}));
        EXPECT_EQ(net_get_netmask("e0", mask.data()), 0);
        EXPECT_EQ(mask, (Bytes4{255, 255, 255, 128}));
        EXPECT_EQ(net_get_gateway("e0", gateway.data()), 0);
        EXPECT_EQ(gateway, (Bytes4{192, 0, 2, 254}));
        EXPECT_EQ(net_get_hwaddr("e0", mac.data()), 0);
        EXPECT_EQ(mac, (std::array<uint8_t, 6>{0x02, 0x00, 0x5E, 0x00, 0x53, 0x01}));
        EXPECT_EQ(net_get_ifaddr("e1", address.data()), -1);
        EXPECT_EQ(net_get_netmask("e1", mask.data()), -1);
        EXPECT_EQ(net_get_gateway("e1", gateway.data()), -1);
        EXPECT_EQ(address, (Bytes4{192, 0, 2, 130}));
        EXPECT_EQ(gateway, (Bytes4{192, 0, 2, 254}));
    });
    if (status == kNotAllowed) GTEST_SKIP() << "no network namespace of its own on this machine";
    EXPECT_EQ(status, 0);
}

TEST(Interface, LeavesTheTargetAloneWhereThereIsNone) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "none0", "lo2", "a-name-of-16-byt", "lo lo"}) {
        std::array<uint8_t, 6> target = {9, 8, 7, 6, 5, 4};
        EXPECT_EQ(net_get_ifaddr(name, target.data()), -1);
        EXPECT_EQ(net_get_netmask(name, target.data()), -1);
        EXPECT_EQ(net_get_hwaddr(name, target.data()), -1);
        EXPECT_EQ(net_get_gateway(name, target.data()), -1);
        EXPECT_EQ(target, (std::array<uint8_t, 6>{9, 8, 7, 6, 5, 4}));
    }
    EXPECT_EQ(net_get_ifaddr("lo", nullptr), -1);
    EXPECT_EQ(net_get_netmask("lo", nullptr), -1);
    EXPECT_EQ(net_get_hwaddr("lo", nullptr), -1);
}

TEST(WirelessInterface, IsTheFirstThatHasAWirelessFolder) {
    TemporaryFolder folder;
    const std::string devices = (folder / "dev").string(), classes = (folder / "net").string();
    writeFile(devices,
              "Inter-|   Receive                 |  Transmit\n"
              " face |bytes    packets errs drop |bytes    packets errs\n"
              "    lo:    1290      14    0    0     1290\n"
              "  eth0: 1 2 3\n wlan1:1 2\n  wlan0: 1 2 3\n");
    char name[IFNAMSIZ] = "";
    for (const char* interface : {"lo", "eth0", "wlan0", "wlan1"}) {
        std::filesystem::create_directories(std::filesystem::path(classes) / interface);
    }
    EXPECT_FALSE(firstWirelessInterface(devices.c_str(), classes.c_str(), name));
    std::filesystem::create_directory(std::filesystem::path(classes) / "wlan0/wireless");
    EXPECT_TRUE(firstWirelessInterface(devices.c_str(), classes.c_str(), name));
    EXPECT_STREQ(name, "wlan0");
    std::filesystem::create_directory(std::filesystem::path(classes) / "wlan1/phy80211");
    EXPECT_TRUE(firstWirelessInterface(devices.c_str(), classes.c_str(), name));
    EXPECT_STREQ(name, "wlan1");
    EXPECT_FALSE(firstWirelessInterface("/nowhere", classes.c_str(), name));
}
