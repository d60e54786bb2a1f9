#include <arpa/inet.h>
#include <net/if.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "checks.h"
#include "platform.h"
#include "room.h"

using Ask = int (*)(const char* interface, uint8_t* address);

static Room room;

static void print(const uint8_t* bytes, size_t size, char (&text)[32]) {
    if (size == 4) snprintf(text, sizeof text, "%d.%d.%d.%d", bytes[0], bytes[1], bytes[2], bytes[3]);
    if (size == 6) {
        snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", bytes[0], bytes[1], bytes[2], bytes[3], bytes[4],
                 bytes[5]);
    }
}

// What the kernel says of the interface; false when it says nothing.
static bool askKernel(unsigned long question, const char* interface, size_t size, uint8_t (&bytes)[6]) {
    ifreq answer = {};
    strncpy(answer.ifr_name, interface, sizeof answer.ifr_name - 1);
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    const int result = ioctl(descriptor, static_cast<decltype(SIOCGIFADDR)>(question), &answer);
    close(descriptor);
    memcpy(bytes, answer.ifr_hwaddr.sa_data + (size == 4 ? 2 : 0), size);  // in front of an address: the port
    return result == 0;
}

static void expectNone(Ask ask, const char* interface, size_t size, const char* what) {
    if (holdsValue(room, ask(interface, static_cast<uint8_t*>(prepare(room, size))), what))
        fail("%s: it has a value", what);
}

static void expectNoneOfOthers(Ask ask, size_t size) {
    char name[201] = {};
    memset(name, 'x', sizeof name - 1);
    expectNone(ask, "nosuch0", size, "an interface that is not there");
    expectNone(ask, name, size, "a name that no interface can have");
}

static void compare(bool has, bool exists, const uint8_t* expected, size_t size) {
    char wanted[32];
    char found[32];
    print(expected, size, wanted);
    print(inside(room), size, found);
    if (has && !exists) return fail("gives %s where there is none", found);
    if (!has && exists) return fail("gives none where there is %s", wanted);
    if (has && memcmp(inside(room), expected, size) != 0) return fail("gives %s for %s", found, wanted);
    note("%s", has ? found : "none");
}

static void checkAgainstKernel(Ask ask, unsigned long question, size_t size, const char* interface) {
    uint8_t expected[6] = {};
    const bool exists = askKernel(question, interface, size, expected);
    const bool has = holdsValue(room, ask(interface, static_cast<uint8_t*>(prepare(room, size))), interface);
    compare(has, exists, expected, size);
    expectNoneOfOthers(ask, size);
}

// Without an expectation a value is shown, for somebody to look at.
static void checkAgainst(const char* expected, int result, const char* what) {
    char text[32];
    uint8_t wanted[4];
    const bool has = holdsValue(room, result, what);
    print(inside(room), 4, text);
    if (expected == nullptr) return note("%s", has ? text : "none");
    compare(has, inet_pton(AF_INET, expected, wanted) == 1, wanted, 4);
}

static const char* asked;
static bool leavesDescriptorsOf(Ask ask) {
    return leavesDescriptors([ask] {
        uint8_t bytes[6];
        ask(asked, bytes);
    });
}

static void checkInterface(Ask ask, unsigned long question, size_t size, const Settings& settings) {
    asked = settings.interface;
    checkAgainstKernel(ask, question, size, settings.interface);
    if (leavesDescriptorsOf(ask)) fail("leaves descriptors open");
}

void checkIfaddr(const Settings& settings) { checkInterface(net_get_ifaddr, SIOCGIFADDR, 4, settings); }

void checkNetmask(const Settings& settings) { checkInterface(net_get_netmask, SIOCGIFNETMASK, 4, settings); }

void checkHwaddr(const Settings& settings) {
    checkInterface(net_get_hwaddr, SIOCGIFHWADDR, 6, settings);
    expectNone(net_get_hwaddr, nullptr, 6, "a null name");
}

void checkGateway(const Settings& settings) {
    asked = settings.interface;
    uint8_t* address = static_cast<uint8_t*>(prepare(room, 4));
    checkAgainst(settings.gateway, net_get_gateway(asked, address), asked);
    expectNoneOfOthers(net_get_gateway, 4);
    if (leavesDescriptorsOf(net_get_gateway)) fail("leaves descriptors open");
}

void checkDns(const Settings& settings) {
    checkAgainst(settings.dns, net_get_dns(static_cast<uint8_t*>(prepare(room, 4))), "the first name server");
    if (leavesDescriptorsOf([](const char*, uint8_t* bytes) { return net_get_dns(bytes); }))
        fail("leaves descriptors open");
}

void checkDns2(const Settings& settings) {
    checkAgainst(settings.dns2, net_get_dns2(static_cast<uint8_t*>(prepare(room, 4))), "the second name server");
    if (leavesDescriptorsOf([](const char*, uint8_t* bytes) { return net_get_dns2(bytes); }))
        fail("leaves descriptors open");
}
