#include <fcntl.h>
#include <stdio.h>
#include <string.h>

#include "checks.h"
#include "platform.h"
#include "room.h"

static constexpr int kFields = 60;
static constexpr int kLongName = 255;

static char path[256];
static char longName[kLongName + 1];

// Sections 3, 1, 2, a long name and one without fields; fields of section 1: 60 down to 1.
static bool makeFile(const Settings& settings) {
    memset(longName, 'n', kLongName);
    snprintf(path, sizeof path, "%s/platform_conformance.%d.ini", settings.folder, static_cast<int>(getpid()));
    FILE* file = fopen(path, "w");
    if (file == nullptr) {
        skip("cannot write %s: another --folder", path);
        return false;
    }
    fprintf(file, "[3]\n7=1\n[1]\n");
    for (int field = kFields; field > 0; field--) fprintf(file, "%d=1\n", field);
    fprintf(file, "[2]\n%s=1\n[%s]\n1=1\n[empty]\n", longName, longName);
    fclose(file);
    return true;
}

static bool isList(const ListNode* list, const char* const* names, int count) {
    for (int position = 0; position < count; position++, list = list->next) {
        if (list == nullptr || memchr(list->name, '\0', sizeof list->name) == nullptr) return false;
        if (strcmp(list->name, names[position]) != 0) return false;
    }
    return list == nullptr;
}

static bool areSections(const ListNode* list) {
    const char* const names[] = {"3", "1", "2", longName, "empty"};
    return isList(list, names, 5);
}

static bool areFields(const ListNode* list) {
    static char texts[kFields][8];
    const char* names[kFields];
    for (int position = 0; position < kFields; position++) {
        snprintf(texts[position], sizeof texts[position], "%d", kFields - position);
        names[position] = texts[position];
    }
    return isList(list, names, kFields);
}

static void expectNothing(ListNode* list, const char* what) {
    if (list != nullptr) fail("%s: not null", what);
    if (list != nullptr) ListFree(list);
}

void checkCfgEnumSec(const Settings& settings) {
    if (!makeFile(settings)) return;
    ListNode* list = CfgEnumSec(path);
    if (!areSections(list))
        fail("five sections, one with a name of %d bytes, do not come back in the order of the file", kLongName);
    ListNode* fields = CfgEnumField(path, "3");
    ListFree(fields);
    if (!areSections(list)) fail("a list is not its caller's until ListFree");
    ListFree(list);
    if (leavesDescriptors([] { ListFree(CfgEnumSec(path)); })) fail("leaves descriptors open");
    close(open(path, O_WRONLY | O_TRUNC | O_CLOEXEC));
    expectNothing(CfgEnumSec(path), "a file without sections");
    unlink(path);
    expectNothing(CfgEnumSec(path), "no such file");
}

void checkCfgEnumField(const Settings& settings) {
    if (!makeFile(settings)) return;
    ListNode* list = CfgEnumField(path, "1");
    if (!areFields(list)) fail("%d fields do not come back in the order of the file", kFields);
    const char* const expected[] = {longName};
    ListNode* other = CfgEnumField(path, "2");
    if (!isList(other, expected, 1)) fail("a field with a name of %d bytes does not come back", kLongName);
    if (!areFields(list)) fail("a list is not its caller's until ListFree");
    ListFree(list);
    ListFree(other);
    expectNothing(CfgEnumField(path, "4"), "no such section");
    expectNothing(CfgEnumField(path, "empty"), "a section without fields");
    if (leavesDescriptors([] { ListFree(CfgEnumField(path, "1")); })) fail("leaves descriptors open");
    unlink(path);
    expectNothing(CfgEnumField(path, "1"), "no such file");
}

static long residentPages() {
    long total = 0;
    long resident = 0;
    FILE* file = fopen("/proc/self/statm", "r");
    if (file == nullptr || fscanf(file, "%ld %ld", &total, &resident) != 2) resident = 0;
    if (file != nullptr) fclose(file);
    return resident;
}

void checkListFree(const Settings& settings) {
    constexpr int kRounds = 600;
    if (!makeFile(settings)) return;
    ListFree(nullptr);
    ListNode* kept = CfgEnumField(path, "1");
    ListFree(CfgEnumSec(path));
    if (!areFields(kept)) fail("frees another list too");
    ListFree(kept);
    const long before = residentPages();
    for (int round = 0; round < kRounds; round++) ListFree(CfgEnumField(path, "1"));
    const long grown = (residentPages() - before) * sysconf(_SC_PAGESIZE);
    if (grown > 4L * 1024 * 1024) fail("%d lists of %d names leave %ld bytes behind", kRounds, kFields, grown);
    unlink(path);
}
