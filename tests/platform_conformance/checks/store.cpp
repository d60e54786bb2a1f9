#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

#include "checks.h"
#include "platform.h"
#include "room.h"
#include "store_keys.h"

#pragma weak requestBegins

struct Key {
    const char* section;
    const char* name;
    size_t size;
};
#define TEXT_ROW(constant, section, name) {section, name, 256},
#define NUMBER_ROW(constant, section, name) {section, name, 4},
#define SHORT_ROW(constant, section, name) {section, name, 2},
#define FLAG_ROW(constant, section, name) {section, name, 1},
static constexpr Key kKeys[] = {QVP_STORE_KEYS(TEXT_ROW, NUMBER_ROW, SHORT_ROW, FLAG_ROW)};
static constexpr int kKeyCount = sizeof kKeys / sizeof kKeys[0];

static const Key kText = {"CAMSYSTEM", "CameraName", 256};
static const Key kNumber = {"HTTP", "Port", 4};
static const Key kShort = {"System", "MainVersion", 2};
static const Key kFlag = {"UPnP", "Enable", 1};

static Room room;

// Asks for a key; true when it has a value, which is then in the room.
static bool readKey(const Key& key) {
    char what[128];
    snprintf(what, sizeof what, "%s/%s", key.section, key.name);
    void* out = prepare(room, key.size);
    if (!holdsValue(room, cfgRead(key.section, key.name, out), what)) return false;
    if (key.size != 256 || memchr(out, '\0', 256) != nullptr) return true;
    fail("%s: no NUL within 256 bytes", what);
    return false;
}

static void expectNone(const char* section, const char* name) {
    if (readKey({section, name, 256})) fail("%s/%s: there is no such key, but it has a value", section, name);
}

// At an odd address, as the daemon's variables may be.
static int writeKey(const Key& key, const void* value) {
    uint8_t copy[1 + 256];
    memcpy(copy + 1, value, key.size);
    return cfgWrite(key.section, key.name, copy + 1, kWriteThrough);
}

static bool holds(const Key& key, const void* value) {
    if (!readKey(key)) return false;
    if (key.size == 256)
        return strcmp(reinterpret_cast<const char*>(inside(room)), static_cast<const char*>(value)) == 0;
    return memcmp(inside(room), value, key.size) == 0;
}

// One process writes, another reads.
static void roundTrip(const Key& key, const void* value, const char* what) {
    inProcess([&] { writeKey(key, value); });
    inProcess([&] {
        if (holds(key, value)) return;
        if (key.size != 256) return fail("%s does not come back", what);
        const char* found = reinterpret_cast<const char*>(inside(room));
        const size_t length = strlen(static_cast<const char*>(value));
        const bool isCut = !isUntouched(room) && strlen(found) < length &&
                           strncmp(found, static_cast<const char*>(value), strlen(found)) == 0;
        if (isCut) return fail("%s comes back cut at %zu", what, strlen(found));
        fail("%s comes back as another one", what);
    });
}

static void roundTripOfTexts() {
    char text[256] = {};
    memset(text, 'x', 255);
    roundTrip(kText, text, "a text of 255 bytes");
    char brief[256] = "short";
    roundTrip(kText, brief, "a text that is shorter than the one before");
    for (int code = 1; code < 256; code++) text[code - 1] = static_cast<char>(code);
    roundTrip(kText, text, "a text of every byte");
    static char others[][256] = {"", " blanks at both ends ", "a=b", "[HTTP]", "# \"quoted\"; \\n", "line\nPort=1\n"};
    for (const char(&other)[256] : others) roundTrip(kText, other, other);
}

static void roundTripOfNumbers() {
    static constexpr int32_t kNumbers[] = {INT32_MIN, -1, 0, 1, 65536, INT32_MAX};
    static constexpr uint16_t kShorts[] = {0, 256, 65535};
    static constexpr uint8_t kFlags[] = {0, 1, 255};
    char what[64];
    for (int32_t number : kNumbers) {
        snprintf(what, sizeof what, "the number %ld", static_cast<long>(number));
        roundTrip(kNumber, &number, what);
    }
    for (uint16_t number : kShorts) {
        snprintf(what, sizeof what, "the short number %d", number);
        roundTrip(kShort, &number, what);
    }
    for (uint8_t number : kFlags) {
        snprintf(what, sizeof what, "the flag %d", number);
        roundTrip(kFlag, &number, what);
    }
}

static void writePort(int32_t port) {
    inProcess([port] { writeKey(kNumber, &port); });
}

static bool readsPort(int32_t port) { return holds(kNumber, &port); }

// A library without requestBegins reads anew each time, one that has it does so before the first call.
static bool isReadAnew() {
    readKey(kNumber);
    writePort(4711);
    if (!readsPort(4711)) return false;
    writePort(4712);
    return readsPort(4712);
}

void checkRequestBegins(const Settings& settings) {
    if (requestBegins == nullptr) return skip("this library has none, every read has to be a new one");
    if (!settings.store) return skip("its checks change the store (--store)");
    if (!isReadAnew()) fail("before its first call a value is kept");
    for (int32_t port = 80; port < 83; port++) {
        writePort(port);
        requestBegins();
        if (!readsPort(port)) fail("what another process has written before the call is not seen behind it");
    }
}

void checkCfgRead(const Settings& settings) {
    inProcess([] {
        for (const Key& key : kKeys) readKey(key);
        expectNone("NoSection", "NoKey");
        expectNone("NoSection", "Port");
        expectNone("HTTP", "NoKey");
        expectNone("HTTP", "CameraName");
        if (leavesDescriptors([] { readKey(kText); })) fail("leaves descriptors open");
    });
    if (!settings.store) return note("what comes back of what was written: --store");
    roundTripOfTexts();
    roundTripOfNumbers();
    inProcess([] {
        if (requestBegins == nullptr && !isReadAnew()) fail("a value is kept, though there is no requestBegins");
    });
}

// A value that no other key has, and that differs from what stood there.
static void makeValue(int number, int round, uint8_t (&value)[256]) {
    const int32_t wide = 100000 * (round + 1) + number;
    const uint16_t narrow = static_cast<uint16_t>(1000 * (round + 1) + number);
    const uint8_t flag = static_cast<uint8_t>(100 * (round + 1) + number);
    memset(value, 0, sizeof value);
    if (kKeys[number].size == 256)
        snprintf(reinterpret_cast<char*>(value), sizeof value, "value %d of %d", round, number);
    if (kKeys[number].size == 4) memcpy(value, &wide, 4);
    if (kKeys[number].size == 2) memcpy(value, &narrow, 2);
    if (kKeys[number].size == 1) value[0] = flag;
}

static void writeRound(int number, int round) {
    uint8_t value[256];
    makeValue(number, round, value);
    const int result = writeKey(kKeys[number], value);
    if (result != 0) fail("%s/%s: returns %d for a value that fits", kKeys[number].section, kKeys[number].name, result);
}

static void expectRound(int number, int round, const char* fault) {
    uint8_t value[256];
    makeValue(number, round, value);
    if (!holds(kKeys[number], value)) fail("%s/%s: %s", kKeys[number].section, kKeys[number].name, fault);
}

static void refuseUnknownKey() {
    char value[256] = "1";
    if (cfgWrite("NoSection", "NoKey", value, kWriteThrough) != -1) fail("a key that is in no list is not refused");
    if (leavesDescriptors([] { writeRound(0, 0); })) fail("leaves descriptors open");
}

void checkCfgWrite(const Settings& settings) {
    if (!settings.store) return skip("it changes the store (--store)");
    inProcess([] {
        for (int number = 0; number < kKeyCount; number++) writeRound(number, 0);
    });
    inProcess([] {
        for (int number = 0; number < kKeyCount; number++)
            expectRound(number, 0, "another process does not find what was written");
    });
    if (hasFailed()) return;
    inProcess([] { writeRound(14, 1); });
    inProcess([] {
        for (int number = 0; number < kKeyCount; number++) {
            expectRound(number, number == 14 ? 1 : 0, "is not as it was after a write to another key");
        }
        refuseUnknownKey();
    });
}

struct SavedValue {
    bool exists;
    uint8_t bytes[256];
};
static SavedValue* saved;

// What goes wrong here is found by the checks of cfgRead.
void saveStore() {
    void* shared =
        mmap(nullptr, sizeof(SavedValue) * kKeyCount, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) abort();
    saved = static_cast<SavedValue*>(shared);
    tryInProcess([] {
        for (int number = 0; number < kKeyCount; number++) {
            uint8_t bytes[2 * 256];  // more than it needs, for a library that takes more
            saved[number].exists = cfgRead(kKeys[number].section, kKeys[number].name, bytes) == 0;
            memcpy(saved[number].bytes, bytes, sizeof saved[number].bytes);
        }
    });
}

void restoreStore() {
    const int status = tryInProcess([] {
        static const uint8_t kNothing[256] = {};
        bool isRestored = true;
        for (int number = 0; number < kKeyCount; number++) {
            const uint8_t* value = saved[number].exists ? saved[number].bytes : kNothing;
            if (writeKey(kKeys[number], value) != 0) isRestored = false;
        }
        if (!isRestored) _exit(1);
    });
    if (!isFinished(status)) fprintf(stderr, "the store does not have its values back\n");
}
