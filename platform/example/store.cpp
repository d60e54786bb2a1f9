// The configuration store: a file with a line a key, "SECTION/Key=value". A byte that is no visible one, and '%',
// stands there as %XX. Every read is of the file as it is at that moment, so there is no requestBegins in this library.
#include <ctype.h>
#include <fcntl.h>
#include <libgen.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <unistd.h>

#include "platform.h"
#include "small_file.h"
#include "store_keys.h"

static constexpr size_t kTextSize = 256;
static constexpr size_t kMostStore = 64 * 1024;  // every key with the longest text, each byte of it as %XX, is less
static constexpr size_t kMostLine = 64 + 3 * kTextSize;

// The size of a variable of each type tells them apart.
struct KeyRow {
    const char* section;
    const char* name;
    size_t size;
};
#define TEXT_ROW(constant, section, name) {section, name, kTextSize},
#define NUMBER_ROW(constant, section, name) {section, name, sizeof(int32_t)},
#define SHORT_ROW(constant, section, name) {section, name, sizeof(uint16_t)},
#define FLAG_ROW(constant, section, name) {section, name, sizeof(uint8_t)},
static constexpr KeyRow kKeys[] = {QVP_STORE_KEYS(TEXT_ROW, NUMBER_ROW, SHORT_ROW, FLAG_ROW)};

static char store[kMostStore];

static const char* storePath() {
    const char* path = getenv("QVP_STORE");
    return path != nullptr ? path : "/etc/qvp.store";
}

// Null for a key that the daemon does not have.
static const KeyRow* findKey(const char* section, const char* name) {
    for (const KeyRow& key : kKeys) {
        if (strcmp(key.section, section) == 0 && strcmp(key.name, name) == 0) return &key;
    }
    return nullptr;
}

// The value of a key in what was read of the store, up to its newline or the end; null: it has none.
static char* findValue(const KeyRow& key) {
    char start[64];
    const size_t length = static_cast<size_t>(snprintf(start, sizeof start, "%s/%s=", key.section, key.name));
    for (char* line = store; line != nullptr; line = strchr(line, '\n')) {
        if (*line == '\n') line++;
        if (strncmp(line, start, length) == 0) return line + length;
    }
    return nullptr;
}

static int decode(const char* value, char* text) {
    for (size_t length = 0; length < kTextSize; length++) {
        unsigned code;
        if (*value == '\n' || *value == '\0') {
            text[length] = '\0';
            return 0;
        }
        if (*value == '%' && isxdigit(static_cast<uint8_t>(value[1])) && isxdigit(static_cast<uint8_t>(value[2]))) {
            sscanf(value + 1, "%2x", &code);
            text[length] = static_cast<char>(static_cast<uint8_t>(code));
            value += 3;
        } else {
            text[length] = *value++;
        }
    }
    return -1;
}

static void encode(const char* text, char* value) {
    for (; *text != '\0'; text++) {
        const uint8_t code = static_cast<uint8_t>(*text);
        value += sprintf(value, code > ' ' && code < 0x7F && code != '%' ? "%c" : "%%%02X", code);
    }
    *value = '\0';
}

// A number goes into a variable of its own type, wherever in memory that lies.
static void putNumber(long number, size_t size, void* out) {
    const int32_t wide = static_cast<int32_t>(number);
    const uint16_t narrow = static_cast<uint16_t>(number);
    const uint8_t flag = static_cast<uint8_t>(number);
    const void* const from = size == sizeof wide     ? static_cast<const void*>(&wide)
                             : size == sizeof narrow ? static_cast<const void*>(&narrow)
                                                     : &flag;
    memcpy(out, from, size);
}

static long takeNumber(const void* value, size_t size) {
    int32_t wide = 0;
    uint16_t narrow = 0;
    memcpy(size == sizeof wide ? static_cast<void*>(&wide) : &narrow, value, size);
    if (size == sizeof wide) return wide;
    return size == sizeof narrow ? narrow : *static_cast<const uint8_t*>(value);
}

// Returns 0 with *out set, or -1 with *out untouched: the key has no value. What the daemon has put into *out before is
// then the value.
int cfgRead(const char* section, const char* key, void* out) {
    char text[kTextSize];
    const KeyRow* row = findKey(section, key);
    if (row == nullptr || readSmallFile(storePath(), store, sizeof store) < 0) return -1;
    const char* value = findValue(*row);
    if (value == nullptr || decode(value, text) != 0) return -1;
    if (row->size != kTextSize) {
        char* end;
        const long number = strtol(text, &end, 10);
        if (end == text || *end != '\0') return -1;
        putNumber(number, row->size, out);
    } else {
        memcpy(out, text, strlen(text) + 1);
    }
    return 0;
}

// What stands in front of the value and behind it stays as it is; a new key comes at the end.
static int writeStore(int descriptor, const KeyRow& key, const char* value) {
    char line[kMostLine];
    char* old = findValue(key);
    const size_t total = strlen(store);
    const size_t before = old != nullptr ? static_cast<size_t>(old - store) : total;
    const size_t behind = old != nullptr ? before + strcspn(old, "\n") : total;
    const bool isOpen = old == nullptr && total > 0 && store[total - 1] != '\n';  // an editor's last line
    if (old != nullptr) {
        snprintf(line, sizeof line, "%s", value);
    } else {
        snprintf(line, sizeof line, "%s%s/%s=%s\n", isOpen ? "\n" : "", key.section, key.name, value);
    }
    const size_t length = strlen(line);
    if (before + length + total - behind >= sizeof store) return -1;
    if (writeAll(descriptor, store, before) != 0 || writeAll(descriptor, line, length) != 0) return -1;
    if (writeAll(descriptor, store + behind, total - behind) != 0) return -1;
    return fsync(descriptor);
}

// The whole file is written beside the old one and put in its place: a power cut leaves the old one or the new one.
static int replaceStore(const KeyRow& key, const char* value) {
    char temporary[kTextSize];
    if (snprintf(temporary, sizeof temporary, "%s.new", storePath()) >= static_cast<int>(sizeof temporary)) return -1;
    if (readSmallFile(storePath(), store, sizeof store) < 0) {
        if (access(storePath(), F_OK) == 0) return -1;
        store[0] = '\0';  // the first key of all
    }
    int descriptor = open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (descriptor < 0) return -1;
    int result = writeStore(descriptor, key, value);
    close(descriptor);
    if (result == 0 && rename(temporary, storePath()) == 0) return 0;
    unlink(temporary);
    return -1;
}

// One writer at a time; the sync of the folder is what makes the new name safe.
static int changeStore(const KeyRow& key, const char* value) {
    char path[kTextSize];
    if (snprintf(path, sizeof path, "%s", storePath()) >= static_cast<int>(sizeof path)) return -1;
    int folder = open(dirname(path), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return -1;
    int result = flock(folder, LOCK_EX) == 0 ? replaceStore(key, value) : -1;
    if (result == 0) result = fsync(folder);
    close(folder);
    return result;
}

// Returns 0 once the value outlives a power cut, or -1 with the old value still there. The last argument is always
// kWriteThrough.
int cfgWrite(const char* section, const char* key, const void* value, int) {
    char encoded[3 * kTextSize];
    const KeyRow* row = findKey(section, key);
    if (row == nullptr) return -1;
    if (row->size != kTextSize) {
        snprintf(encoded, sizeof encoded, "%ld", takeNumber(value, row->size));
    } else if (strnlen(static_cast<const char*>(value), kTextSize) < kTextSize) {
        encode(static_cast<const char*>(value), encoded);
    } else {
        return -1;
    }
    return changeStore(*row, encoded);
}
