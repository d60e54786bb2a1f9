#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <stdint.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "common/kept_file.h"
#include "platform.h"

// Any socket can be asked; it stays open for the next question.
static int askingSocket() {
    static int descriptor = -1;
    if (descriptor < 0) descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    return descriptor;
}

// Asks the kernel one thing about the interface; false when there is no such interface, or no answer.
static bool ask(unsigned long question, const char* interface, ifreq& answer) {
    if (interface == nullptr || strlen(interface) >= IFNAMSIZ) return false;
    memset(&answer, 0, sizeof answer);
    memcpy(answer.ifr_name, interface, strlen(interface));
    // The request's type differs between C libraries; its 32 bits are the same.
    return ioctl(askingSocket(), static_cast<decltype(SIOCGIFADDR)>(question), &answer) == 0;
}

static int askAddress(unsigned long question, const char* interface, uint8_t address[4]) {
    ifreq answer;
    if (address == nullptr || !ask(question, interface, answer)) return -1;
    if (answer.ifr_addr.sa_family != AF_INET) return -1;
    sockaddr_in internet;
    memcpy(&internet, &answer.ifr_addr, sizeof internet);
    memcpy(address, &internet.sin_addr, 4);
    return 0;
}

// The address stands in the header of every reply and in some of them once more.
int net_get_ifaddr(const char* interface, uint8_t address[4]) {
    static struct {
        uint32_t request;
        char interface[IFNAMSIZ];
        uint8_t address[4];
    } known;
    const bool isOfARequest = requestNumber != 0 && interface != nullptr && address != nullptr;
    if (isOfARequest && known.request == requestNumber && strcmp(known.interface, interface) == 0) {
        memcpy(address, known.address, sizeof known.address);
        return 0;
    }
    if (askAddress(SIOCGIFADDR, interface, address) != 0) return -1;
    if (!isOfARequest) return 0;
    known.request = requestNumber;
    memcpy(known.interface, interface, strlen(interface) + 1);  // the kernel knows no longer one
    memcpy(known.address, address, sizeof known.address);
    return 0;
}

int net_get_netmask(const char* interface, uint8_t mask[4]) { return askAddress(SIOCGIFNETMASK, interface, mask); }

// Only a link with Ethernet's kind of address has six bytes to give.
int net_get_hwaddr(const char* interface, uint8_t mac[6]) {
    ifreq answer;
    if (mac == nullptr || !ask(SIOCGIFHWADDR, interface, answer)) return -1;
    const sockaddr& hardware = answer.ifr_hwaddr;
    if (hardware.sa_family != ARPHRD_ETHER && hardware.sa_family != ARPHRD_LOOPBACK) return -1;
    memcpy(mac, hardware.sa_data, 6);
    return 0;
}
