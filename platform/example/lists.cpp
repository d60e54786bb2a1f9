// The names in an ini file: "[section]" and "field=value" lines. A list is the caller's, so this is the one place that
// asks the heap for memory.
#include <stdlib.h>
#include <string.h>

#include "platform.h"
#include "small_file.h"

static constexpr char kBlanks[] = " \t\r";

// The name in a line: behind '[' and in front of `end`, without the blanks around it. Cuts the line there.
static const char* takeName(char* text, char end) {
    char* last = strchr(text, end);
    if (last == nullptr) return nullptr;
    while (last > text && strchr(kBlanks, last[-1]) != nullptr) last--;
    *last = '\0';
    return text + strspn(text, kBlanks);
}

// Puts a node at the end of the list and returns where the one behind it goes.
static ListNode** append(ListNode** end, const char* name) {
    ListNode* node = static_cast<ListNode*>(calloc(1, sizeof(ListNode)));
    if (node == nullptr) return end;
    strncpy(node->name, name, sizeof node->name - 1);
    *end = node;
    return &node->next;
}

// The sections, or with `section` the fields of that one.
static ListNode* listNames(const char* file, const char* section) {
    static char text[16 * 1024];
    ListNode* list = nullptr;
    ListNode** end = &list;
    bool inside = false;
    char* rest = nullptr;
    if (file == nullptr || readSmallFile(file, text, sizeof text) < 0) return nullptr;
    for (char* line = strtok_r(text, "\n", &rest); line != nullptr; line = strtok_r(nullptr, "\n", &rest)) {
        line += strspn(line, kBlanks);
        if (*line == '#' || *line == ';') continue;
        const bool isSection = *line == '[';
        const char* name = isSection ? takeName(line + 1, ']') : takeName(line, '=');
        if (name == nullptr) continue;
        if (isSection) inside = section != nullptr && strcmp(name, section) == 0;
        if (isSection ? section == nullptr : inside) end = append(end, name);
    }
    return list;
}

// Return the names in the order of the file, or null when there are none. The caller may hold several lists at once.
ListNode* CfgEnumSec(const char* file) { return listNames(file, nullptr); }

ListNode* CfgEnumField(const char* file, const char* section) {
    return section != nullptr ? listNames(file, section) : nullptr;
}

// Takes null.
void ListFree(ListNode* list) {
    while (list != nullptr) {
        ListNode* next = list->next;
        free(list);
        list = next;
    }
}
