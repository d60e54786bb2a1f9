#include <signal.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "faults.h"
#include "platform.h"

extern "C" {
int __real_cfgRead(const char* section, const char* name, void* out);
int __wrap_cfgRead(const char* section, const char* name, void* out);
int __real_cfgWrite(const char* section, const char* name, const void* value, int flag);
int __wrap_cfgWrite(const char* section, const char* name, const void* value, int flag);
}

static bool isKey(const char* section, const char* name, const char* wantedSection, const char* wantedName) {
    return strcmp(section, wantedSection) == 0 && strcmp(name, wantedName) == 0;
}

// The port as it was read first.
static bool isKept;
static int32_t kept;

#ifdef WITH_REQUEST_BEGINS
static bool hasBegun;

void requestBegins() {
    hasBegun = true;
    if (isBroken("requestBegins", "early")) isKept = false;
}

static bool keepsValues() {
    return isBroken("requestBegins", "early") || (isBroken("requestBegins", "stale") && hasBegun);
}
#else
static bool keepsValues() { return isBroken("cfgRead", "stale"); }
#endif

static int readKept(void* out) {
    if (!isKept && __real_cfgRead("HTTP", "Port", &kept) != 0) return -1;
    isKept = true;
    memcpy(out, &kept, sizeof kept);
    return 0;
}

static int readText(char* out) {
    char text[256];
    if (__real_cfgRead("CAMSYSTEM", "CameraName", text) != 0) return -1;
    if (isBroken("cfgRead", "cuts")) text[254] = '\0';
    for (char& letter : text) {
        if (isBroken("cfgRead", "7 bits")) letter = static_cast<char>(letter & 0x7F);
    }
    if (isBroken("cfgRead", "unterminated")) {
        memset(out, 'x', 256);
        return 0;
    }
    strcpy(out, text);
    return spoil("cfgRead", 0, out, 256);
}

static int readNumber(void* out) {
    int32_t number;
    if (__real_cfgRead("HTTP", "Port", &number) != 0) return -1;
    if (isBroken("cfgRead", "16 bits")) number = static_cast<int16_t>(number);
    memcpy(out, &number, sizeof number);
    return spoil("cfgRead", 0, out, sizeof number);
}

static int readShort(void* out) {
    uint16_t number;
    if (__real_cfgRead("System", "MainVersion", &number) != 0) return -1;
    if (isBroken("cfgRead", "8 bits")) number = static_cast<uint8_t>(number);
    memcpy(out, &number, sizeof number);
    if (isBroken("cfgRead", "wide short")) memset(static_cast<char*>(out) + 2, 0, 2);
    return 0;
}

static int readFlag(void* out) {
    uint8_t flag;
    if (__real_cfgRead("UPnP", "Enable", &flag) != 0) return -1;
    *static_cast<uint8_t*>(out) = isBroken("cfgRead", "truth") ? flag != 0 : flag;
    if (isBroken("cfgRead", "wide flag")) memset(static_cast<char*>(out) + 1, 0, 3);
    return 0;
}

static bool isInvented(const char* section, const char* name) {
    if (isBroken("cfgRead", "invents")) return strcmp(section, "NoSection") == 0;
    return isBroken("cfgRead", "any section") && strcmp(name, "CameraName") == 0;
}

int __wrap_cfgRead(const char* section, const char* name, void* out) {
    forgetGroup();
    leakOf("cfgRead");
    if (isBroken("cfgRead", "dies")) raise(SIGSEGV);
    if (isBroken("cfgRead", "exits")) _exit(0);
    if (isBroken("cfgRead", "hangs")) pause();
    if (isInvented(section, name)) return static_cast<char*>(out)[0] = '\0';
    if (keepsValues() && isKey(section, name, "HTTP", "Port")) return readKept(out);
    if (isKey(section, name, "CAMSYSTEM", "CameraName")) return readText(static_cast<char*>(out));
    if (isKey(section, name, "HTTP", "Port")) return readNumber(out);
    if (isKey(section, name, "System", "MainVersion")) return readShort(out);
    if (isKey(section, name, "UPnP", "Enable")) return readFlag(out);
    const int result = __real_cfgRead(section, name, out);
    return result == 0 ? 0 : spoil("cfgRead", result, out, 1);
}

static const char* sectionFor(const char* section) {
    return isBroken("cfgWrite", "one section") && strcmp(section, "WIRELESS_REP") == 0 ? "WIRELESS" : section;
}

// A text that is shorter than the old one gets the end of that.
static int writeOverOld(const char* section, const char* name, const void* value, int flag) {
    char text[256] = {};
    __real_cfgRead(section, name, text);
    memcpy(text, value, strlen(static_cast<const char*>(value)));
    return __real_cfgWrite(section, name, text, flag);
}

int __wrap_cfgWrite(const char* section, const char* name, const void* value, int flag) {
    isKept = false;
    leakOf("cfgWrite");
    if (isBroken("cfgWrite", "memory")) return 0;
    if (isBroken("cfgWrite", "spills") && strcmp(section, "HTTP") == 0) {
        const uint8_t flagOfOther = 9;
        __real_cfgWrite("UPnP", "Enable", &flagOfOther, flag);
    }
    if (isBroken("cfgWrite", "tail") && strcmp(section, "CAMSYSTEM") == 0)
        return writeOverOld(section, name, value, flag);
    const int result = __real_cfgWrite(sectionFor(section), name, value, flag);
    return isBroken("cfgWrite", "accepts") ? 0 : resultOf("cfgWrite", result);
}
