// The names in an ini file as linked lists. The only part of the platform that asks the heap for memory itself: the
// lists belong to the caller.
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "common/complain.h"
#include "platform.h"
#include "store/ini_file.h"

static bool readFile(const char* path, IniText& text) {
    int descriptor = path != nullptr ? open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK) : -1;
    if (descriptor < 0) return false;
    int result = iniRead(descriptor, text);
    if (result != 0) complain("cannot read %s: %s", path, strerror(errno));
    close(descriptor);
    return result == 0;
}

static bool isSame(const ListNode& node, Slice name) { return sliceEquals(name, node.name); }

// Appends the name, cut to 255 bytes, unless the list has it.
static void appendName(ListNode*& list, Slice name) {
    constexpr size_t kMost = sizeof(ListNode::name) - 1;
    if (name.length > kMost) name.length = kMost;
    ListNode** end = &list;
    for (; *end != nullptr; end = &(*end)->next) {
        if (isSame(**end, name)) return;
    }
    ListNode* node = static_cast<ListNode*>(calloc(1, sizeof(ListNode)));
    if (node == nullptr) return;
    memcpy(node->name, name.text, name.length);
    *end = node;
}

ListNode* CfgEnumSec(const char* file) {
    ListNode* list = nullptr;
    IniText& text = iniScratch();
    if (!readFile(file, text)) return nullptr;
    IniLine line;
    for (const char* start = iniFirstLine(text); iniTakeLine(text, start, line); start = line.next) {
        if (line.kind == IniKind::Section) appendName(list, line.name);
    }
    return list;
}

ListNode* CfgEnumField(const char* file, const char* section) {
    ListNode* list = nullptr;
    IniText& text = iniScratch();
    if (section == nullptr || !readFile(file, text)) return nullptr;
    bool inside = false;
    IniLine line;
    for (const char* start = iniFirstLine(text); iniTakeLine(text, start, line); start = line.next) {
        if (line.kind == IniKind::Section) inside = sliceEquals(line.name, section);
        if (inside && line.kind == IniKind::Field) appendName(list, line.name);
    }
    return list;
}

void ListFree(ListNode* list) {
    while (list != nullptr) {
        ListNode* next = list->next;
        free(list);
        list = next;
    }
}
