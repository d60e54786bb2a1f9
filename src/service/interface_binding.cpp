#include "service/interface_binding.h"

#include <errno.h>
#include <fcntl.h>
#include <net/if.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "camera/device.h"
#include "service/service_socket.h"
#include "service/service_state.h"
#include "system/trace.h"

static void tellName(const char* name) {
    static char told[IFNAMSIZ];
    const bool isNew = strncmp(name, g_szInterfaceName, IFNAMSIZ - 1) != 0 && strcmp(name, told) != 0;
    memcpy(told, name, sizeof told);
    if (isNew) trace("qvp(%s): its interface is called %s now\n", g_szInterfaceName, name);
}

// A new socket under the old one's number: to bind one anew that was bound before takes CAP_NET_RAW.
static int replaceSocket() {
    const int fresh = openSocket();
    if (fresh < 0) return -1;
    const bool isDone = bindToInterface(fresh, g_szInterfaceName) == 0 && allowBroadcast(fresh) == 0 &&
                        allowReuse(fresh) == 0 && bindToPort(fresh) == 0 && dup3(fresh, g_nSocket, O_CLOEXEC) >= 0;
    const int reason = errno;
    close(fresh);
    errno = reason;
    return isDone ? 0 : -1;
}

// Says once why it cannot, but nothing while the interface is not there.
static void serveAgain() {
    static int told = ENODEV;
    if (replaceSocket() == 0) {
        told = ENODEV;
        readDeviceMac();
        trace("qvp(%s): the interface is there again\n", g_szInterfaceName);
    } else if (errno != ENODEV && errno != told) {
        told = errno;
        trace("qvp(%s): the interface is there again, but cannot be served: %s\n", g_szInterfaceName, strerror(told));
    }
}

void keepBoundToInterface() {
    char name[IFNAMSIZ] = {};
    socklen_t size = sizeof name;
    if (getsockopt(g_nSocket, SOL_SOCKET, SO_BINDTODEVICE, name, &size) == 0) {
        if (size > 0) tellName(name);
        return;
    }
    if (errno == ENODEV) serveAgain();
}
