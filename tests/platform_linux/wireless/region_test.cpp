#include <climits>

#include "store/store_fixture.h"

static int readRegion(int* region) {
    requestBegins();
    return HWMIB_getRegion(region);
}

TEST_F(StoreTest, HoldsTheRadioRegion) {
    int region = -7;
    EXPECT_EQ(readRegion(&region), -1);
    put("[HWMIB]\nRegion=x\n");
    EXPECT_EQ(readRegion(&region), -1);
    EXPECT_EQ(region, -7);
    EXPECT_EQ(readRegion(nullptr), -1);
    put("[HWMIB]\nRegion=16\n");
    EXPECT_EQ(readRegion(nullptr), -1);
    EXPECT_EQ(readRegion(&region), 0);
    EXPECT_EQ(region, 16);
    put("[HWMIB]\nRegion=-2147483648\n");
    EXPECT_EQ(readRegion(&region), 0);
    EXPECT_EQ(region, INT_MIN);
}
