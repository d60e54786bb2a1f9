// Ranges of addresses.
#include "client/fleet/address_range.h"

#include <gmock/gmock.h>

#include "client/error.h"

using namespace client;

TEST(AddressRange, ItsForms) {
    struct Row {
        const char *text, *shown;
        size_t size;
    };
    for (const Row& row :
         {Row{"192.168.10.20-69/24", "192.168.10.20-69/24", 50},
          Row{"192.168.10.20-192.168.10.69/24", "192.168.10.20-69/24", 50},
          Row{"192.168.10.250-192.168.11.5/23", "192.168.10.250-192.168.11.5/23", 12},
          Row{"192.168.10.20/24", "192.168.10.20/24", 1}, Row{"192.168.10.1-254/24", "192.168.10.1-254/24", 254}}) {
        const AddressRange range = parseAddressRange(row.text);
        EXPECT_EQ(range.text(), row.shown);
        EXPECT_EQ(range.size(), row.size) << row.text;
    }
    const AddressRange range = parseAddressRange("192.168.10.250-192.168.11.5/23");
    EXPECT_EQ(range.first, 0xC0A80AFAu);
    EXPECT_EQ(range.textOf(range.first + 6), "192.168.11.0/23");
    EXPECT_TRUE(range.contains(0xC0A80B05) && !range.contains(0xC0A80B06) && !range.contains(0xC0A80AF9));
}

static std::string rangeFault(const char* text) try {
    parseAddressRange(text);
    return "none";
} catch (const Error& error) {
    return error.what();
}

TEST(AddressRange, ItsFaults) {
    constexpr char kForm[] = "must be a range of addresses such as 192.168.10.20-69/24, or a single one";
    for (const char* text : {"/24", "20-69/24", "192.168.10.20-/24", "192.168.10.20-256/24", "192.168.10.20-69/0",
                             "192.168.10.20-69/31", "192.168.10.20-69/x", "192.168.10.20-69-70/24",
                             "192.168.10.020-69/24", "192.168.10.20-+69/24", "192.168.10.20-99999999999/24"}) {
        EXPECT_EQ(rangeFault(text), kForm) << text;
    }
    EXPECT_EQ(rangeFault("192.0.2.1-9"), "needs the length of its network's prefix, such as 192.0.2.1-9/24");
    EXPECT_EQ(rangeFault("192.0.2.9-1/24"), "ends before it begins");
    EXPECT_EQ(rangeFault("192.0.2.9-192.0.3.1/24"), "reaches out of its network");
    EXPECT_EQ(rangeFault("192.0.2.0-9/24"), "begins or ends with what is not the address of a host");
    EXPECT_EQ(rangeFault("192.0.2.9-255/24"), "begins or ends with what is not the address of a host");
}
