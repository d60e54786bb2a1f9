#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "faults.h"
#include "platform.h"

extern "C" {
int __real_Base64dec(const char* text, char* out);
int __wrap_Base64dec(const char* text, char* out);
int __real_usrInit(int flag);
int __wrap_usrInit(int flag);
const char* __real_usrGetGroupName(const char* name);
const char* __wrap_usrGetGroupName(const char* name);
}

static bool isBase64(const char* fault) { return isBroken("Base64dec", fault); }

// The text without what is not in the alphabet, as others decode it.
static int decodeAll(const char* text, char* out) {
    char letters[2048];
    size_t length = 0;
    for (; *text != '\0'; text++) {
        if (strchr(" \n=", *text) == nullptr) letters[length++] = *text;
    }
    letters[length] = '\0';
    return __real_Base64dec(letters, out);
}

static int refuseNull(const char* text, char* out) {
    if (text == nullptr && isBase64("null text")) return 0;
    if (text == nullptr && isBase64("writes for null")) out[0] = '\0';
    return out == nullptr && isBase64("null target") ? 0 : -1;
}

int __wrap_Base64dec(const char* text, char* out) {
    if (text == nullptr || out == nullptr) return refuseNull(text, out);
    if (isBase64("blanks")) return decodeAll(text, out);
    if (isBase64("padding") && strlen(text) % 4 != 0) return -1;
    int length = __real_Base64dec(text, out);
    if (isBase64("no NUL")) out[length] = 'x';
    if (isBase64("other bytes") && length > 0) out[0]++;
    if (isBase64("cuts") && length > 254) length = 254;
    if (isBase64("beyond") && length > 254) out[256] = '\0';
    if (isBase64("counts the NUL")) length++;
    return length;
}

int __wrap_usrInit(int flag) {
    leakOf("usrInit");
    if (isBroken("usrInit", "none")) return -1;
    return resultOf("usrInit", __real_usrInit(flag));
}

static char group[256];

void forgetGroup() {
    if (isBroken("usrGetGroupName", "short-lived")) group[0] = '\0';
}

const char* __wrap_usrGetGroupName(const char* name) {
    leakOf("usrGetGroupName");
    snprintf(group, sizeof group, "%s", __real_usrGetGroupName(name));
    if (group[0] == '\0' && isBroken("usrGetGroupName", "null")) return nullptr;
    if (group[0] == '\0' && isBroken("usrGetGroupName", "invents")) return "users";
    return isBroken("usrGetGroupName", "first group") ? "users" : group;
}
