// Addresses of gateways and name servers, from text files.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdio>
#include <optional>

#include "network/network_files.h"
#include "platform.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

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

// The kernel prints it as the signed number that it is not.
TEST(Gateway, MayHaveAMetricBeyondTheSignedNumbers) {
    const std::string worst = route("eth0", kAny, {192, 168, 1, 9}, "0003", -1, kAny);
    const std::string better = route("eth0", kAny, {192, 168, 1, 8}, "0003", -2, kAny);
    const std::string best = route("eth0", kAny, {192, 168, 1, 7}, "0003", 2147483647, kAny);
    const std::string large = route("eth1", kAny, {10, 0, 0, 1}, "0003", 2000000000, kAny);
    const std::string half = route("eth1", kAny, {10, 0, 0, 2}, "0003", 1000000000, kAny);
    EXPECT_EQ(gatewayFrom(kRouteHeading + large + half, "eth1"), (Bytes4{10, 0, 0, 2}));
    EXPECT_EQ(gatewayFrom(kRouteHeading + worst, "eth0"), (Bytes4{192, 168, 1, 9}));
    EXPECT_EQ(gatewayFrom(kRouteHeading + worst + better, "eth0"), (Bytes4{192, 168, 1, 8}));
    EXPECT_EQ(gatewayFrom(kRouteHeading + worst + best + better, "eth0"), (Bytes4{192, 168, 1, 7}));
}

TEST(Gateway, IsThatOfThePresentTable) {
    const auto table = [](uint8_t last, const char* interface) {
        return kRouteHeading + route(interface, kAny, {192, 168, 1, last}, "0003", 0, kAny);
    };
    for (uint8_t last = 1; last < 5; last++) {
        EXPECT_EQ(gatewayFrom(table(last, "eth0"), "eth0"), (Bytes4{192, 168, 1, last}));
        EXPECT_EQ(gatewayFrom(table(last, "eth1"), "eth0"), std::nullopt);
        EXPECT_EQ(gatewayFrom(table(last, "eth1"), "eth1"), (Bytes4{192, 168, 1, last}));
        EXPECT_EQ(gatewayFrom(table(last, "eth1"), "eth1"), (Bytes4{192, 168, 1, last}));
        EXPECT_EQ(gatewayFrom("", "eth1"), std::nullopt);
    }
}

TEST(Gateway, IsFoundAnywhereInALongTable) {
    const std::string wanted = route("eth0", kAny, {192, 168, 1, 1}, "0003", 0, kAny);
    std::string others;
    for (int number = 0; number < 400; number++) {
        EXPECT_EQ(gatewayFrom(kRouteHeading + others + wanted + others, "eth0"), (Bytes4{192, 168, 1, 1})) << number;
        others += route("eth0", {10, 0, 0, static_cast<uint8_t>(number)}, kAny, "0005", number, {255, 255, 255, 255});
    }
    EXPECT_EQ(gatewayFrom(kRouteHeading + others, "eth0"), std::nullopt);
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
    uint8_t servers[kNameServers][4];
    const int count = readNameServers((folder / "resolv.conf").c_str(), servers);
    if (index >= count) return std::nullopt;
    return Bytes4{servers[index][0], servers[index][1], servers[index][2], servers[index][3]};
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
    uint8_t servers[kNameServers][4];
    EXPECT_EQ(readNameServers("/nowhere/resolv.conf", servers), -1);
    EXPECT_EQ(net_get_dns(nullptr), -1);
    EXPECT_EQ(net_get_dns2(nullptr), -1);
}

TEST(NameServers, AreThoseOfTheSystem) {
    TemporaryFolder etc;
    writeFile(etc / "resolv.conf", "nameserver 192.0.2.1\nnameserver 192.0.2.2\n");
    if (!withPrivateEtc(etc.path(), [] {
            Bytes4 first = {}, second = {};
            requestBegins();
            EXPECT_EQ(net_get_dns(first.data()), 0);
            EXPECT_EQ(net_get_dns2(second.data()), 0);
            EXPECT_EQ(first, (Bytes4{192, 0, 2, 1}));
            EXPECT_EQ(second, (Bytes4{192, 0, 2, 2}));
        })) {
        GTEST_SKIP() << "no private /etc on this machine";
    }
}
