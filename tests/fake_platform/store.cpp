#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>
#include <variant>

#include "event_log.h"
#include "fake_platform.h"
#include "key_types.h"
#include "parts.h"

namespace fake {
namespace {

constexpr std::size_t kTextSize = 256;

using Value = std::variant<std::string, std::int32_t, std::uint16_t, std::uint8_t>;

struct Store {
    std::map<std::pair<std::string, std::string>, Value> values;
    std::vector<std::string> unclearedReads, unclearedWrites;
    int openLists = 0;
};

Store g_store;

[[noreturn]] void refuseSeed(const std::string& section, const std::string& key) {
    std::fprintf(stderr, "fake store: no such key of that type: %s %s\n", section.c_str(), key.c_str());
    std::abort();
}

void seed(const std::string& section, const std::string& key, KeyType type, Value value) {
    if (keyType(section, key) != type) refuseSeed(section, key);
    g_store.values[{section, key}] = std::move(value);
}

template <typename Wanted>
std::optional<Wanted> stored(const std::string& section, const std::string& key) {
    const auto found = g_store.values.find({section, key});
    if (found == g_store.values.end()) return std::nullopt;
    if (!std::holds_alternative<Wanted>(found->second)) refuseSeed(section, key);
    return std::get<Wanted>(found->second);
}

std::size_t targetSize(KeyType type) {
    switch (type) {
        case KeyType::Text:
            return kTextSize;
        case KeyType::Number:
            return 4;
        case KeyType::Number16:
            return 2;
        case KeyType::Flag:
            return 1;
        default:
            return 0;
    }
}

void noteUncleared(const std::string& section, const std::string& key, const void* target) {
    const auto* bytes = static_cast<const unsigned char*>(target);
    const std::size_t size = targetSize(keyType(section, key));
    if (std::any_of(bytes, bytes + size, [](unsigned char byte) { return byte != 0; })) {
        g_store.unclearedReads.push_back(section + " " + key);
    }
}

// A text's 256 bytes are all the daemon's: none behind its NUL may be left over from elsewhere.
void noteUnclearedText(const std::string& section, const std::string& key, const void* source) {
    if (keyType(section, key) != KeyType::Text) return;
    const auto* text = static_cast<const char*>(source);
    if (std::any_of(std::find(text, text + 256, '\0'), text + 256, [](char byte) { return byte != 0; })) {
        g_store.unclearedWrites.push_back(section + " " + key);
    }
}

void copyOut(const Value& value, void* target) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        std::memcpy(target, text->c_str(), std::min(text->size() + 1, kTextSize));
    } else {
        std::visit(
            [target](const auto& number) {
                if constexpr (sizeof number <= 4) std::memcpy(target, &number, sizeof number);
            },
            value);
    }
}

std::optional<Value> taken(KeyType type, const void* source) {
    switch (type) {
        case KeyType::Text:
            return std::string(static_cast<const char*>(source));
        case KeyType::Number: {
            std::int32_t value;
            std::memcpy(&value, source, sizeof value);
            return value;
        }
        case KeyType::Number16: {
            std::uint16_t value;
            std::memcpy(&value, source, sizeof value);
            return value;
        }
        case KeyType::Flag:
            return *static_cast<const std::uint8_t*>(source);
        default:
            return std::nullopt;
    }
}

void noteOpenSignals() {
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    for (const int number : {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1}) {
        if (sigismember(&blocked, number) == 0) return increment(Counter::InterruptibleStore);
    }
}

std::string shown(const std::optional<Value>& value) {
    if (!value) return "unknown";
    if (const auto* text = std::get_if<std::string>(&*value)) return quoted(*text);
    if (const auto* number = std::get_if<std::int32_t>(&*value)) return "number " + std::to_string(*number);
    if (const auto* number = std::get_if<std::uint16_t>(&*value)) return "number16 " + std::to_string(*number);
    return "flag " + std::to_string(std::get<std::uint8_t>(*value));
}

ListNode* newList(const std::vector<std::string>& names) {
    ListNode* first = nullptr;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        auto* node = new ListNode{};
        name->copy(node->name, sizeof node->name - 1);
        node->next = first;
        first = node;
    }
    if (first != nullptr) ++g_store.openLists;
    return first;
}

}  // namespace

void resetStore() { g_store = {}; }

void setText(const std::string& section, const std::string& key, const std::string& value) {
    if (value.size() > kTextSize) refuseSeed(section, key);
    seed(section, key, KeyType::Text, value);
}

void setNumber(const std::string& section, const std::string& key, std::int32_t value) {
    seed(section, key, KeyType::Number, value);
}

void setNumber16(const std::string& section, const std::string& key, std::uint16_t value) {
    seed(section, key, KeyType::Number16, value);
}

void setFlag(const std::string& section, const std::string& key, std::uint8_t value) {
    seed(section, key, KeyType::Flag, value);
}

void erase(const std::string& section, const std::string& key) { g_store.values.erase({section, key}); }

std::optional<std::string> text(const std::string& section, const std::string& key) {
    return stored<std::string>(section, key);
}

std::optional<std::int32_t> number(const std::string& section, const std::string& key) {
    return stored<std::int32_t>(section, key);
}

std::optional<std::uint8_t> flag(const std::string& section, const std::string& key) {
    return stored<std::uint8_t>(section, key);
}

const std::vector<std::string>& unclearedReads() { return g_store.unclearedReads; }

const std::vector<std::string>& unclearedWrites() { return g_store.unclearedWrites; }

int openLists() { return g_store.openLists; }

}  // namespace fake

using namespace fake;

extern "C" {

int cfgRead(const char* section, const char* key, void* out) {
    noteOpenSignals();
    appendEvent(std::string("cfgRead ") + section + " " + key);
    noteUncleared(section, key, out);
    const auto found = g_store.values.find({section, key});
    if (found == g_store.values.end()) return -1;
    copyOut(found->second, out);
    return 0;
}

int cfgWrite(const char* section, const char* key, const void* value, int flag) {
    const std::optional<Value> given = taken(keyType(section, key), value);
    noteUnclearedText(section, key, value);
    noteOpenSignals();
    appendEvent(std::string("cfgWrite ") + section + " " + key + " " + shown(given) + " " + std::to_string(flag));
    if (!given || callFails("cfgWrite")) return -1;
    g_store.values[{section, key}] = *given;
    return 0;
}

ListNode* CfgEnumSec(const char* file) {
    appendEvent(std::string("CfgEnumSec ") + file);
    const auto found = camera().iniFiles.find(file);
    if (found == camera().iniFiles.end()) return nullptr;
    std::vector<std::string> names;
    for (const auto& section : found->second) names.push_back(section.first);
    return newList(names);
}

ListNode* CfgEnumField(const char* file, const char* section) {
    appendEvent(std::string("CfgEnumField ") + file + " " + section);
    const auto found = camera().iniFiles.find(file);
    if (found == camera().iniFiles.end()) return nullptr;
    for (const auto& [name, fields] : found->second) {
        if (name == section) return newList(fields);
    }
    return nullptr;
}

void ListFree(ListNode* list) {
    appendEvent(list == nullptr ? "ListFree null" : std::string("ListFree ") + list->name);
    if (list != nullptr) --g_store.openLists;
    while (list != nullptr) {
        ListNode* next = list->next;
        delete list;
        list = next;
    }
}

}  // extern "C"
