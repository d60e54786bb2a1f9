#include "fuzz/camera.h"

#include <algorithm>
#include <cstring>

#include "store_keys.h"

namespace fuzz {
namespace {

enum class Type { Text, Number, Short, Flag };

struct Key {
    const char* section;
    const char* name;
    Type type;
};

#define TEXT_ROW(constant, section, name) {section, name, Type::Text},
#define NUMBER_ROW(constant, section, name) {section, name, Type::Number},
#define SHORT_ROW(constant, section, name) {section, name, Type::Short},
#define FLAG_ROW(constant, section, name) {section, name, Type::Flag},
constexpr Key kKeys[] = {QVP_STORE_KEYS(TEXT_ROW, NUMBER_ROW, SHORT_ROW, FLAG_ROW)};

constexpr size_t kTextSize = 256;

size_t sizeOf(Type type) {
    switch (type) {
        case Type::Text:
            return kTextSize;
        case Type::Number:
            return 4;
        case Type::Short:
            return 2;
        case Type::Flag:
            break;
    }
    return 1;
}

const Key* findKey(const char* section, const char* name) {
    const auto* found = std::ranges::find_if(kKeys, [&](const Key& key) {
        return std::strcmp(key.section, section) == 0 && std::strcmp(key.name, name) == 0;
    });
    return found != std::end(kKeys) ? found : nullptr;
}

std::optional<std::string>& valueOf(const Key& key) { return camera().values[static_cast<size_t>(&key - kKeys)]; }

bool isAllZero(const void* bytes, size_t size) {
    const auto* first = static_cast<const char*>(bytes);
    return std::all_of(first, first + size, [](char byte) { return byte == 0; });
}

int answer(uint8_t (&&octets)[4], uint8_t* target) {
    if (!camera().address) return -1;
    std::memcpy(target, octets, sizeof octets);
    return 0;
}

ListNode* listOf(std::initializer_list<const char*> names) {
    ListNode* first = nullptr;
    for (auto name = std::rbegin(names); name != std::rend(names); name++) {
        auto* node = new ListNode{"", first};
        std::strncpy(node->name, *name, sizeof node->name - 1);
        first = node;
    }
    camera().openLists++;
    return first;
}

}  // namespace

Camera& camera() {
    static Camera camera;
    return camera;
}

void makeCamera() {
    camera() = {};
    camera().values.resize(std::size(kKeys));
    valueOf(*findKey("USER_ADMIN", "Username1")) = "admin";
    valueOf(*findKey("USER_ADMIN", "Password1")) = "secret";
}

size_t keyCount() { return std::size(kKeys); }

// A text of all its 256 bytes has no NUL, as a store may hand it over.
void store(size_t key, std::string_view bytes) {
    std::string value(bytes.substr(0, kTextSize));
    if (kKeys[key].type == Type::Text) {
        value.resize(std::min(value.find('\0'), value.size()));
    } else {
        value.resize(sizeOf(kKeys[key].type));
    }
    camera().values[key] = value;
}

std::string storedText(const char* section, const char* key) {
    return valueOf(*findKey(section, key)).value_or("").substr(0, kTextSize - 1);
}

}  // namespace fuzz

using namespace fuzz;

extern "C" {

int cfgRead(const char* section, const char* name, void* out) {
    const Key* key = findKey(section, name);
    if (key == nullptr) return -1;
    const bool isReadOnTop = std::strcmp(name, "PPPoEEnable") == 0;
    require(isReadOnTop || isAllZero(out, sizeOf(key->type)), "what is read into is cleared before");
    const std::optional<std::string>& value = valueOf(*key);
    if (!value) return -1;
    if (key->type == Type::Text) {
        std::memcpy(out, value->c_str(), std::min(value->size() + 1, kTextSize));
    } else {
        std::memcpy(out, value->data(), sizeOf(key->type));
    }
    return 0;
}

int cfgWrite(const char* section, const char* name, const void* value, int flag) {
    require(flag == kWriteThrough, "what is written is written through");
    camera().writes++;
    const Key* key = findKey(section, name);
    if (key == nullptr) return -1;
    std::string bytes(static_cast<const char*>(value), sizeOf(key->type));
    if (key->type == Type::Text) {
        const size_t end = bytes.find('\0');
        require(end != bytes.npos, "a text that is written ends");
        require(isAllZero(bytes.data() + end, bytes.size() - end), "nothing stands behind a text that is written");
        bytes.resize(end);
    }
    valueOf(*key) = bytes;
    return 0;
}

ListNode* CfgEnumSec(const char*) { return listOf({"0", "1", "7"}); }

ListNode* CfgEnumField(const char*, const char* section) {
    if (std::strcmp(section, "1") == 0) return listOf({"1", "6", "11", "x", "4294967301"});
    return std::strcmp(section, "7") == 0 ? listOf({"36", "0"}) : nullptr;
}

void ListFree(ListNode* list) {
    if (list != nullptr) camera().openLists--;
    while (list != nullptr) {
        ListNode* next = list->next;
        delete list;
        list = next;
    }
}

int net_get_ifaddr(const char*, uint8_t address[4]) {
    if (!camera().address) return -1;
    std::ranges::copy(*camera().address, address);
    return 0;
}

int net_get_netmask(const char*, uint8_t mask[4]) { return answer({255, 255, 255, 0}, mask); }
int net_get_gateway(const char*, uint8_t address[4]) { return answer({192, 0, 2, 1}, address); }
int net_get_dns(uint8_t address[4]) { return answer({192, 0, 2, 2}, address); }
int net_get_dns2(uint8_t address[4]) { return answer({192, 0, 2, 3}, address); }

int net_get_hwaddr(const char*, uint8_t mac[6]) {
    std::memcpy(mac, kMac, sizeof kMac);
    return 0;
}

int usrInit(int) { return 0; }
const char* usrGetGroupName(const char*) { return camera().group.c_str(); }

int SIReadInt(int, int* value) {
    *value = camera().upgradeState;
    return 0;
}

int SIWriteInt(int, int) { return 0; }

int get_oem_timezone_id(int, int id) { return id >= 0 && id < 100 ? id : -1; }
int get_real_timezone_id(int, int wireId) { return wireId < 100 ? wireId : -1; }

int getSiteList(char* buffer, int size) {
    require(isAllZero(buffer, static_cast<size_t>(size)), "the list of networks goes into a cleared buffer");
    const size_t length = camera().siteList.copy(buffer, static_cast<size_t>(size) - 1);
    buffer[length] = '\0';
    return 0;
}

int HWMIB_getRegion(int* region) {
    *region = camera().region;
    return 0;
}

int VerifyFWCode(const void*, int) { return 0; }
int UpgradeFWCode(const void*, int) { return 0; }
int cfgAesDecode(void*, int) { return 1; }
int unpackCFG(const void*, int) { return 0; }

}  // extern "C"
