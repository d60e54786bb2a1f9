// qvp-store: the board's scripts read and change the configuration store by it, under the lock that the daemon takes.
#include <errno.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "common/numbers.h"
#include "platform.h"
#include "store/ini_value.h"
#include "store/key_table.h"
#include "store/store_file.h"

enum Status { kDone = 0, kFailed = 1, kRefused = 2 };

static constexpr char kHelp[] =
    "Usage: qvp-store get SECTION/KEY\n"
    "       qvp-store set SECTION/KEY [VALUE]\n"
    "       qvp-store list\n"
    "Read and change the camera's configuration store, beside a daemon that does the same.\n"
    "\n"
    "  get   prints the value of a key\n"
    "  set   changes it, under the lock that the daemon takes, and returns when it is safe from a power cut; without\n"
    "        VALUE it is the text on standard input, which keeps a password out of the list of processes\n"
    "  list  prints every key that the store has room for\n"
    "\n"
    "The store is $QVP_STORE, else /etc/qvp/camera.ini.\n"
    "\n"
    "Exit status: 0 when that was done; 1 when the key has no value, which is not told, or the store cannot be read\n"
    "or written; 2 for arguments, keys and values that are refused.\n";

static int refuse(const char* key, const char* reason) {
    fprintf(stderr, "qvp-store: %s: %s\n", key, reason);
    return kRefused;
}

// The position of SECTION/KEY in the table, or -1.
static int keyNumber(const char* path) {
    const char* slash = strchr(path, '/');
    if (slash == nullptr) return -1;
    const Slice section = {path, static_cast<size_t>(slash - path)};
    const Slice name = {slash + 1, strlen(slash + 1)};
    return storeKeyNumber(section, name);
}

static void printValue(const StoreKey& key, const void* value) {
    switch (key.type) {
        case StoreType::Text:
            printf("%s\n", static_cast<const char*>(value));
            break;
        case StoreType::Int32:
            printf("%d\n", *static_cast<const int32_t*>(value));
            break;
        case StoreType::Uint16:
            printf("%d\n", *static_cast<const uint16_t*>(value));
            break;
        case StoreType::Flag:
            printf("%d\n", *static_cast<const uint8_t*>(value));
            break;
    }
}

static int fail(const char* what) {
    fprintf(stderr, "qvp-store: %s: %s\n", what, strerror(errno));
    return kFailed;
}

// To be called behind what was printed.
static int finish() { return fflush(stdout) == 0 && ferror(stdout) == 0 ? kDone : fail("standard output"); }

// A key without a value is no more than that status: scripts ask for what may not be there.
static int get(const StoreKey& key) {
    alignas(int32_t) char value[kMostText + 1];
    if (storeLoad() == nullptr) return fail(storePath());
    if (cfgRead(key.section, key.name, value) != 0) return kFailed;
    printValue(key, value);
    return finish();
}

// The name stands in a command line that a shell takes apart.
static bool isForAShell(const char* text) { return strpbrk(text, "\"`\\$") != nullptr; }

static int setText(const StoreKey& key, const char* path, const char* text) {
    if (strlen(text) > kMostText) return refuse(path, "longer than 255 bytes");
    const bool isName = storeKeyNumber(kAdministratorName.section, kAdministratorName.name) == keyNumber(path);
    if (isName && isForAShell(text)) return refuse(path, "a name has none of \" ` \\ $");
    return cfgWrite(key.section, key.name, text, kWriteThrough) == 0 ? kDone : kFailed;
}

template <typename Number>
static int setNumber(const StoreKey& key, const char* path, const char* text, int64_t lowest, int64_t highest) {
    int64_t number = 0;
    if (!parseDecimal(text, strlen(text), lowest, highest, number)) {
        fprintf(stderr, "qvp-store: %s: not a number from %lld to %lld\n", path, static_cast<long long>(lowest),
                static_cast<long long>(highest));
        return kRefused;
    }
    const Number value = static_cast<Number>(number);
    return cfgWrite(key.section, key.name, &value, kWriteThrough) == 0 ? kDone : kFailed;
}

static int set(const StoreKey& key, const char* path, const char* text) {
    switch (key.type) {
        case StoreType::Text:
            return setText(key, path, text);
        case StoreType::Int32:
            return setNumber<int32_t>(key, path, text, INT32_MIN, INT32_MAX);
        case StoreType::Uint16:
            return setNumber<uint16_t>(key, path, text, 0, UINT16_MAX);
        case StoreType::Flag:
            return setNumber<uint8_t>(key, path, text, 0, UINT8_MAX);
    }
    return kRefused;
}

// All of standard input without the end of its last line; null for one that is longer than any text of the store, or
// has a byte that no text can have.
static const char* standardInput() {
    static char text[kMostText + 3];
    const size_t length = fread(text, 1, sizeof text - 1, stdin);
    text[length] = '\0';
    if (ferror(stdin) != 0 || memchr(text, '\0', length) != nullptr) return nullptr;
    if (length > 0 && text[length - 1] == '\n') text[length - 1] = '\0';
    return text;
}

static int list() {
    for (int number = 0; number < kStoreKeyCount; number++) {
        printf("%s/%s\n", storeKey(number).section, storeKey(number).name);
    }
    return finish();
}

static int help() {
    fputs(kHelp, stdout);
    return finish();
}

static int usage() {
    fputs(kHelp, stderr);
    return kRefused;
}

int main(int count, char** words) {
    signal(SIGXFSZ, SIG_IGN);  // a limit on files is a write that fails
    const char* verb = count > 1 ? words[1] : "";
    if (count == 2 && strcmp(verb, "--help") == 0) return help();
    if (count == 2 && strcmp(verb, "list") == 0) return list();
    const bool isGet = count == 3 && strcmp(verb, "get") == 0;
    const bool isSet = (count == 3 || count == 4) && strcmp(verb, "set") == 0;
    if (!isGet && !isSet) return usage();
    const char* path = words[2];
    const int number = keyNumber(path);
    if (number < 0) return refuse(path, "the store has no such key; qvp-store list prints them all");
    if (isGet) return get(storeKey(number));
    const char* text = count == 4 ? words[3] : standardInput();
    return text != nullptr ? set(storeKey(number), path, text) : refuse(path, "standard input is no text");
}
