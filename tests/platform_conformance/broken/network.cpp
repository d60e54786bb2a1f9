#include <stdint.h>
#include <string.h>

#include "faults.h"
#include "platform.h"

using Ask = int (*)(const char* interface, uint8_t* address);

static void reverse(uint8_t* bytes, unsigned long size) {
    for (unsigned long at = 0; at < size / 2; at++) {
        const uint8_t byte = bytes[at];
        bytes[at] = bytes[size - 1 - at];
        bytes[size - 1 - at] = byte;
    }
}

static bool isInvented(const char* operation, const char* interface) {
    if (interface == nullptr) return isBroken(operation, "null");
    if (strlen(interface) > 15) return isBroken(operation, "long name");
    return isBroken(operation, "invents") && strcmp(interface, "nosuch0") == 0;
}

static int askBroken(const char* operation, Ask ask, const char* interface, uint8_t* out, unsigned long size) {
    if (isInvented(operation, interface)) return 0;
    if (isBroken(operation, "none")) return -1;
    int result = ask(interface, out);
    if (result == 0 && isBroken(operation, "reversed")) reverse(out, size);
    if (isBroken(operation, "phantom")) result = 0;
    return spoil(operation, result, out, size);
}

#define BREAK(name, size)                                             \
    extern "C" int __real_##name(const char*, uint8_t*);              \
    extern "C" int __wrap_##name(const char*, uint8_t*);              \
    int __wrap_##name(const char* interface, uint8_t* out) {          \
        return askBroken(#name, __real_##name, interface, out, size); \
    }
BREAK(net_get_ifaddr, 4)
BREAK(net_get_netmask, 4)
BREAK(net_get_gateway, 4)
BREAK(net_get_hwaddr, 6)

#define BREAK_SERVER(name)                                                          \
    extern "C" int __real_##name(uint8_t*);                                         \
    extern "C" int __wrap_##name(uint8_t*);                                         \
    static int ask_##name(const char*, uint8_t* out) { return __real_##name(out); } \
    int __wrap_##name(uint8_t* out) {                                               \
        forgetGroup();                                                              \
        return askBroken(#name, ask_##name, "", out, 4);                            \
    }
BREAK_SERVER(net_get_dns)
BREAK_SERVER(net_get_dns2)
