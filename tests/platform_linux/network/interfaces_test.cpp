// Addresses of interfaces, from the kernel.
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>

#include "common/kept_file.h"
#include "platform.h"
#include "support/child_process.h"

using Bytes4 = std::array<uint8_t, 4>;

// In a network of its own: two ends of a cable, one of them without an address. Whatever else asks the kernel before
// this does so in a child: what asks stays open, in the network where it was opened.
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

        // One address for all of a request, whatever comes between; the next request has the new one.
        requestBegins();
        EXPECT_EQ(net_get_ifaddr("e0", address.data()), 0);
        EXPECT_EQ(system("ip address flush dev e0 && ip address add 192.0.2.7/25 dev e0"), 0);
        EXPECT_EQ(net_get_ifaddr("e0", address.data()), 0);
        EXPECT_EQ(address, (Bytes4{192, 0, 2, 130}));
        EXPECT_EQ(net_get_ifaddr("e1", address.data()), -1);
        requestBegins();
        EXPECT_EQ(net_get_ifaddr("e0", address.data()), 0);
        EXPECT_EQ(address, (Bytes4{192, 0, 2, 7}));
    });
    if (status == kNotAllowed) GTEST_SKIP() << "no network namespace of its own on this machine";
    EXPECT_EQ(status, 0);
}

TEST(Interface, LoopbackHasItsAddresses) {
    requestNumber = 0;                                                 // outside of a request
    std::array<uint8_t, 5> address = {9, 9, 9, 9, 9}, mask = address;  // with a byte that is not asked for
    std::array<uint8_t, 7> mac = {9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(net_get_ifaddr("lo", address.data()), 0);
    EXPECT_EQ(address, (std::array<uint8_t, 5>{127, 0, 0, 1, 9}));
    EXPECT_EQ(net_get_netmask("lo", mask.data()), 0);
    EXPECT_EQ(mask, (std::array<uint8_t, 5>{255, 0, 0, 0, 9}));
    EXPECT_EQ(net_get_hwaddr("lo", mac.data()), 0);
    EXPECT_EQ(mac, (std::array<uint8_t, 7>{0, 0, 0, 0, 0, 0, 9}));
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
