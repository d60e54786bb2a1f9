#include "camera/device.h"

#include <string.h>

#include "platform.h"

char g_szInterfaceName[64];
uint8_t g_uDeviceMac[6];

int initDevice(const char* interfaceName) {
    if (interfaceName == nullptr) return -1;
    strncpy(g_szInterfaceName, interfaceName, sizeof g_szInterfaceName - 1);
    readDeviceMac();
    return 0;
}

void readDeviceMac() {
    memset(g_uDeviceMac, 0, sizeof g_uDeviceMac);
    net_get_hwaddr(g_szInterfaceName, g_uDeviceMac);
}
