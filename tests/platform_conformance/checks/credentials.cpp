#include <stdio.h>
#include <string.h>

#include "checks.h"
#include "platform.h"
#include "room.h"

static Room room;

struct Row {
    const char* text;
    int length;
    const char* bytes;
    const char* what;
};
static constexpr Row kRows[] = {
    {"YWRtaW4=", 5, "admin", "a padded text"},
    {"YWRtaW4", 5, "admin", "a text without its padding"},
    {"YQ==", 1, "a", "one byte"},
    {"", 0, "", "an empty text"},
    {"Y", 0, "", "less than a byte"},
    {"YWJj ZGVm", 3, "abc", "a blank, which is not in the alphabet"},
    {"YWJj\nZGVm", 3, "abc", "a newline, which is not in the alphabet"},
    {"YWJj-_-_", 3, "abc", "'-', which is not in the alphabet"},
    {"YWJj\xC3\xA4", 3, "abc", "a byte above 127"},
    {"YQ==YWJj", 1, "a", "letters behind the padding"},
    {"+/+/", 3, "\xFB\xFF\xBF", "the alphabet's last two"},
    {"AGEA", 3, "\0a\0", "zero bytes"},
};

// Decodes into 256 bytes; -2 when the promises that hold for every text are broken.
static int decode(const char* text, const char* what) {
    char* out = static_cast<char*>(prepare(room, 256));
    const int length = Base64dec(text, out);
    holdsValue(room, length < 0 ? -1 : 0, what);
    if (length < 0 || length > 255) {
        fail("%s: returns %d", what, length);
        return -2;
    }
    if (out[length] != '\0') fail("%s: no NUL behind the %d bytes", what, length);
    return length;
}

static void expectRow(const Row& row) {
    const int length = decode(row.text, row.what);
    if (length == -2) return;
    if (length != row.length) return fail("%s: %d bytes and not %d", row.what, length, row.length);
    if (memcmp(inside(room), row.bytes, static_cast<size_t>(length)) != 0) fail("%s: other bytes", row.what);
}

static void expectAtMost255() {
    char text[1025] = {};
    memset(text, '/', 340);
    if (decode(text, "255 bytes") != 255) fail("255 bytes do not come whole");
    memset(text, '/', sizeof text - 1);
    if (decode(text, "768 bytes") != 255) fail("768 bytes are not cut at 255");
}

void checkBase64dec(const Settings&) {
    for (const Row& row : kRows) expectRow(row);
    expectAtMost255();
    char* out = static_cast<char*>(prepare(room, 256));
    if (Base64dec(nullptr, out) != -1) fail("a null text is not refused");
    if (!isUntouched(room)) fail("writes for a null text");
    if (Base64dec("YQ==", nullptr) != -1) fail("a null target is not refused");
}

void checkUsrInit(const Settings&) {
    const int result = usrInit(0);
    if (result == -1) return skip("returns -1, there is no user table");
    if (result != 0) fail("returns %d, which is neither 0 nor -1", result);
    if (leavesDescriptors([] { usrInit(0); })) fail("leaves descriptors open");
}

static void expectUnknown(const char* name) {
    const char* group = usrGetGroupName(name);
    if (group == nullptr) return fail("null for the unknown user '%s'", name);
    if (group[0] != '\0') fail("'%s' for the unknown user '%s'", group, name);
}

// The name stays there until the next call of this operation, whatever else is called.
static void expectToLast(const char* name) {
    char copy[256];
    uint8_t bytes[256];
    const char* group = usrGetGroupName(name);
    if (group == nullptr) return;
    snprintf(copy, sizeof copy, "%s", group);
    cfgRead("USER_ADMIN", "Username1", bytes);
    net_get_dns(bytes);
    if (strcmp(group, copy) != 0) fail("the group of '%s' changes before the next call", name);
}

void checkUsrGetGroupName(const Settings& settings) {
    usrInit(0);
    const char* const unknowns[] = {"no-such-user", "", "admin "};
    for (const char* unknown : unknowns) expectUnknown(unknown);
    if (leavesDescriptors([] { usrGetGroupName("no-such-user"); })) fail("leaves descriptors open");
    if (settings.administrator == nullptr) return note("whose group is \"admin\": --administrator NAME");
    expectToLast(settings.administrator);
    const char* group = usrGetGroupName(settings.administrator);
    if (group == nullptr || strcmp(group, kAdministrators) != 0) {
        fail("'%s' for the administrator '%s'", group != nullptr ? group : "(null)", settings.administrator);
    }
}
