#include "service/service_socket.h"

#include <errno.h>
#include <net/if.h>
#include <netinet/in.h>
#include <string.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include "protocol/packet_header.h"

int openSocket() {
    const int opened = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
    if (opened < FD_SETSIZE) return opened;  // select can wait for it
    close(opened);
    errno = EMFILE;
    return -1;
}

int bindToInterface(int socket, const char* interfaceName) {
    struct {
        char name[IFNAMSIZ];
        uint8_t rest[16];
    } interface = {};
    static_assert(sizeof interface == 32);
    memcpy(interface.name, interfaceName, strnlen(interfaceName, sizeof interface.name));
    return setsockopt(socket, SOL_SOCKET, SO_BINDTODEVICE, &interface, sizeof interface);
}

static int switchOn(int socket, int option) {
    const int on = 1;
    return setsockopt(socket, SOL_SOCKET, option, &on, sizeof on);
}

int allowBroadcast(int socket) { return switchOn(socket, SO_BROADCAST); }

int allowReuse(int socket) { return switchOn(socket, SO_REUSEADDR); }

int bindToPort(int socket) {
    sockaddr_in local = {};
    local.sin_family = AF_INET;
    local.sin_port = htons(kPort);
    local.sin_addr.s_addr = htonl(INADDR_ANY);
    return bind(socket, reinterpret_cast<const sockaddr*>(&local), sizeof local);
}
