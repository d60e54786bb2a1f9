#include "store/key_table.h"

#include "store_keys.h"

#define TEXT_ROW(constant, section, name) {section, name, StoreType::Text},
#define NUMBER_ROW(constant, section, name) {section, name, StoreType::Int32},
#define SHORT_ROW(constant, section, name) {section, name, StoreType::Uint16},
#define FLAG_ROW(constant, section, name) {section, name, StoreType::Flag},
static constexpr StoreKey kKeys[] = {QVP_STORE_KEYS(TEXT_ROW, NUMBER_ROW, SHORT_ROW, FLAG_ROW)};

static constexpr int compareText(const char* left, const char* right) {
    while (*left != '\0' && *left == *right) {
        left++;
        right++;
    }
    return static_cast<unsigned char>(*left) - static_cast<unsigned char>(*right);
}

static constexpr int compareKey(const StoreKey& key, const char* section, const char* name) {
    int order = compareText(key.section, section);
    return order != 0 ? order : compareText(key.name, name);
}

static constexpr size_t kKeyCount = sizeof kKeys / sizeof kKeys[0];

static constexpr bool isSortedAndUnique() {
    for (size_t index = 1; index < kKeyCount; index++) {
        if (compareKey(kKeys[index - 1], kKeys[index].section, kKeys[index].name) >= 0) return false;
    }
    return true;
}

static_assert(isSortedAndUnique(), "the search needs the keys in byte order, each once");

const StoreKey* findStoreKey(const char* section, const char* name) {
    if (section == nullptr || name == nullptr) return nullptr;
    size_t low = 0;
    size_t high = kKeyCount;
    while (low < high) {
        size_t middle = (low + high) / 2;
        int order = compareKey(kKeys[middle], section, name);
        if (order == 0) return &kKeys[middle];
        if (order < 0) low = middle + 1;
        if (order > 0) high = middle;
    }
    return nullptr;
}
