// The library behind this one has neither radio nor flash, so what can be broken stands here too.
#include <stdio.h>
#include <string.h>

#include "faults.h"
#include "platform.h"

extern "C" {
int __wrap_getSiteList(char* buffer, int size);
int __wrap_VerifyFWCode(const void* image, int length);
int __wrap_UpgradeFWCode(const void* image, int length);
int __wrap_cfgAesDecode(void* data, int length);
int __wrap_unpackCFG(const void* data, int length);
}

static bool breaksList(const char* fault) { return isBroken("getSiteList", fault); }

int __wrap_getSiteList(char* buffer, int size) {
    const int typeAt = breaksList("columns") ? 97 : 98;
    const char* channel = breaksList("channel") ? "-" : "6";
    leakOf("getSiteList");
    if (breaksList("touches")) {
        buffer[0] = 'x';
        return -1;
    }
    const int room = breaksList("size") ? 4096 : size;
    snprintf(buffer, static_cast<size_t>(room), "%-200s\n%-*s%s\n%-*s%s\n", "heading", typeAt, channel, "In", typeAt,
             channel, "Ad");
    if (breaksList("no NUL")) memset(buffer, 'x', static_cast<size_t>(size));
    return resultOf("getSiteList", 0);
}

static bool isImage(const void* image, int length) { return length > 4 && memcmp(image, "GOOD", 4) == 0; }

int __wrap_VerifyFWCode(const void* image, int length) {
    if (isBroken("VerifyFWCode", "accepts")) return 0;
    if (isBroken("VerifyFWCode", "refuses")) return 1;
    if (isBroken("VerifyFWCode", "changes")) static_cast<char*>(const_cast<void*>(image))[length - 1] = 0;
    if (isBroken("VerifyFWCode", "behind")) static_cast<char*>(const_cast<void*>(image))[length] = 0;
    return resultOf("VerifyFWCode", isImage(image, length) ? 0 : 2);
}

int __wrap_UpgradeFWCode(const void* image, int length) {
    return !isBroken("UpgradeFWCode", "refuses") && isImage(image, length) ? 0 : -1;
}

int __wrap_cfgAesDecode(void* data, int length) {
    if (isBroken("cfgAesDecode", "behind")) static_cast<char*>(data)[length] = 0;
    return !isBroken("cfgAesDecode", "refuses") && isImage(data, length) ? length : 0;
}

int __wrap_unpackCFG(const void* data, int length) {
    return !isBroken("unpackCFG", "refuses") && isImage(data, length) ? 0 : -1;
}
