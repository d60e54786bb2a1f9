#include "store/key_table.h"

#include <string.h>

#define TEXT_ROW(constant, section, name) {section, name, StoreType::Text},
#define NUMBER_ROW(constant, section, name) {section, name, StoreType::Int32},
#define SHORT_ROW(constant, section, name) {section, name, StoreType::Uint16},
#define FLAG_ROW(constant, section, name) {section, name, StoreType::Flag},
static constexpr StoreKey kKeys[] = {QVP_STORE_KEYS(TEXT_ROW, NUMBER_ROW, SHORT_ROW, FLAG_ROW)};

static constexpr size_t lengthOf(const char* text) {
    size_t length = 0;
    while (text[length] != '\0') length++;
    return length;
}

// Four letters tell the keys apart well enough; whoever finds a key compares all of it.
static constexpr unsigned kSlots = 256;

static constexpr unsigned slotOf(Slice section, Slice name) {
    if (section.length == 0 || name.length == 0) return 0;
    const auto letter = [](Slice text, size_t position) { return static_cast<unsigned char>(text.text[position]); };
    const unsigned sum = letter(section, 0) + 5u * static_cast<unsigned>(section.length) +
                         31u * letter(name, name.length / 2) + 7u * letter(name, name.length - 1) +
                         61u * letter(name, 0) + 17u * static_cast<unsigned>(name.length);
    return sum % kSlots;
}

static constexpr Slice sliceOf(const char* text) { return {text, lengthOf(text)}; }

// Position + 1 of the key, 0: none; a key whose slot is taken stands in the next free one.
struct Slots {
    uint8_t keys[kSlots];
    unsigned longest;  // how far a key stands behind its slot
};

static constexpr Slots makeSlots() {
    Slots slots = {};
    for (int key = 0; key < kStoreKeyCount; key++) {
        unsigned slot = slotOf(sliceOf(kKeys[key].section), sliceOf(kKeys[key].name));
        unsigned steps = 0;
        for (; slots.keys[slot] != 0; slot = (slot + 1) % kSlots) steps++;
        slots.keys[slot] = static_cast<uint8_t>(key + 1);
        if (steps > slots.longest) slots.longest = steps;
    }
    return slots;
}

static constexpr Slots kTable = makeSlots();
static_assert(kTable.longest <= 3, "a search is a look or two");

int storeKeyNumber(Slice section, Slice name) {
    for (unsigned slot = slotOf(section, name); kTable.keys[slot] != 0; slot = (slot + 1) % kSlots) {
        const int key = kTable.keys[slot] - 1;
        if (sliceEquals(name, kKeys[key].name) && sliceEquals(section, kKeys[key].section)) return key;
    }
    return -1;
}

static bool areThoseOf(const char* section, const char* name, int key) {
    return kKeys[key].name == name && kKeys[key].section == section;
}

// The linker makes one of equal constants, so a caller's names mostly are this table's own. A request asks for its keys
// in the same order as the last one of its kind: behind the key before comes the one that came behind it then.
int storeKeyNumber(const char* section, const char* name) {
    static uint8_t followers[kStoreKeyCount];
    static int before;
    if (section == nullptr || name == nullptr) return -1;
    int key = followers[before];
    if (!areThoseOf(section, name, key)) {
        key = storeKeyNumber(Slice{section, strlen(section)}, Slice{name, strlen(name)});
        if (key < 0) return -1;
        followers[before] = static_cast<uint8_t>(key);
    }
    before = key;
    return key;
}

const StoreKey& storeKey(int number) { return kKeys[number]; }
