// Addresses of an interface, from the kernel, asked anew each time.
#include <net/if.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <stdint.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform.h"

// False for a null name, one that no interface can have, and what the kernel has no answer to.
static bool ask(unsigned long question, const char* interface, ifreq& answer) {
    if (interface == nullptr || strlen(interface) >= IFNAMSIZ) return false;
    memset(&answer, 0, sizeof answer);
    memcpy(answer.ifr_name, interface, strlen(interface));
    int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) return false;
    // The type of the request differs between C libraries.
    bool answered = ioctl(descriptor, static_cast<decltype(SIOCGIFADDR)>(question), &answer) == 0;
    close(descriptor);
    return answered;
}

static int askAddress(unsigned long question, const char* interface, uint8_t address[4]) {
    ifreq answer;
    if (!ask(question, interface, answer) || answer.ifr_addr.sa_family != AF_INET) return -1;
    sockaddr_in internet;
    memcpy(&internet, &answer.ifr_addr, sizeof internet);
    memcpy(address, &internet.sin_addr, 4);
    return 0;
}

// Return 0 and four bytes, first octet first, or -1 with the four bytes untouched.
int net_get_ifaddr(const char* interface, uint8_t address[4]) { return askAddress(SIOCGIFADDR, interface, address); }

int net_get_netmask(const char* interface, uint8_t mask[4]) { return askAddress(SIOCGIFNETMASK, interface, mask); }

// Returns 0 and six bytes, or -1 with the six bytes untouched, for a null name too. The daemon asks once, at its start,
// and answers to that address from then on.
int net_get_hwaddr(const char* interface, uint8_t mac[6]) {
    ifreq answer;
    if (!ask(SIOCGIFHWADDR, interface, answer)) return -1;
    const sockaddr& hardware = answer.ifr_hwaddr;
    if (hardware.sa_family != ARPHRD_ETHER && hardware.sa_family != ARPHRD_LOOPBACK) return -1;
    memcpy(mac, hardware.sa_data, 6);
    return 0;
}
