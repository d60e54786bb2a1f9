#include <stdint.h>

#include "platform.h"

int HWMIB_getRegion(int* region) {
    int32_t stored;
    if (region == nullptr || cfgRead("HWMIB", "Region", &stored) != 0) return -1;
    *region = stored;
    return 0;
}
