#include "service/interface_binding.h"

#include <errno.h>
#include <net/if.h>
#include <string.h>
#include <sys/socket.h>

#include "camera/device.h"
#include "service/service_state.h"
#include "system/trace.h"

int bindToInterface(const char* interfaceName) {
    struct {
        char name[IFNAMSIZ];
        uint8_t rest[16];
    } interface = {};
    static_assert(sizeof interface == 32);
    memcpy(interface.name, interfaceName, strnlen(interfaceName, sizeof interface.name));
    return setsockopt(g_nSocket, SOL_SOCKET, SO_BINDTODEVICE, &interface, sizeof interface);
}

static void tellName(const char* name) {
    static char told[IFNAMSIZ];
    const bool isNew = strncmp(name, g_szInterfaceName, IFNAMSIZ - 1) != 0 && strcmp(name, told) != 0;
    memcpy(told, name, sizeof told);
    if (isNew) trace("qvp(%s): its interface is called %s now\n", g_szInterfaceName, name);
}

void keepBoundToInterface() {
    char name[IFNAMSIZ] = {};
    socklen_t size = sizeof name;
    if (getsockopt(g_nSocket, SOL_SOCKET, SO_BINDTODEVICE, name, &size) == 0) {
        if (size > 0) tellName(name);
        return;
    }
    if (errno != ENODEV || bindToInterface(g_szInterfaceName) < 0) return;
    readDeviceMac();
    trace("qvp(%s): the interface is there again\n", g_szInterfaceName);
}
