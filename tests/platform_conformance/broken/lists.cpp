#include <stdlib.h>
#include <string.h>

#include "faults.h"
#include "platform.h"

extern "C" {
ListNode* __real_CfgEnumSec(const char* file);
ListNode* __wrap_CfgEnumSec(const char* file);
ListNode* __real_CfgEnumField(const char* file, const char* section);
ListNode* __wrap_CfgEnumField(const char* file, const char* section);
void __real_ListFree(ListNode* list);
void __wrap_ListFree(ListNode* list);
}

static ListNode room[64];  // of lists that are not their caller's

static ListNode* copyIntoRoom(ListNode* list) {
    int count = 0;
    for (ListNode* node = list; node != nullptr && count < 64; node = node->next) {
        room[count] = *node;
        room[count].next = nullptr;
        if (count > 0) room[count - 1].next = &room[count];
        count++;
    }
    __real_ListFree(list);
    return count > 0 ? room : nullptr;
}

static ListNode* reverse(ListNode* list) {
    ListNode* reversed = nullptr;
    while (list != nullptr) {
        ListNode* next = list->next;
        list->next = reversed;
        reversed = list;
        list = next;
    }
    return reversed;
}

static void cut(ListNode* list, size_t most) {
    for (; list != nullptr; list = list->next) list->name[most] = '\0';
}

static ListNode* phantom() {
    ListNode* node = static_cast<ListNode*>(calloc(1, sizeof(ListNode)));
    strcpy(node->name, "phantom");
    return node;
}

static ListNode* spoilList(const char* operation, ListNode* list) {
    leakOf(operation);
    if (isBroken(operation, "reversed")) return reverse(list);
    if (isBroken(operation, "shared")) return copyIntoRoom(list);
    if (isBroken(operation, "cuts")) cut(list, 32);
    if (isBroken(operation, "unterminated") && list != nullptr) memset(list->name, 'x', sizeof list->name);
    if (isBroken(operation, "few") && list != nullptr && list->next != nullptr) {
        __real_ListFree(list->next->next);
        list->next->next = nullptr;
    }
    return list == nullptr && isBroken(operation, "phantom") ? phantom() : list;
}

ListNode* __wrap_CfgEnumSec(const char* file) {
    if (isBroken("CfgEnumField", "shared")) copyIntoRoom(phantom());
    return spoilList("CfgEnumSec", __real_CfgEnumSec(file));
}

static ListNode* last;

ListNode* __wrap_CfgEnumField(const char* file, const char* section) {
    if (isBroken("CfgEnumSec", "shared")) copyIntoRoom(phantom());
    last = spoilList("CfgEnumField", __real_CfgEnumField(file, section));
    return last;
}

void __wrap_ListFree(ListNode* list) {
    if (isBroken("ListFree", "leaks") || list == room) return;
    if (isBroken("ListFree", "null") && list == nullptr) abort();
    if (isBroken("ListFree", "greedy") && list != last && last != nullptr) last->name[0] = '\0';
    if (list == last) last = nullptr;
    __real_ListFree(list);
}
