#include <stdint.h>

#include "platform.h"
#include "store_keys.h"

int HWMIB_getRegion(int* region) {
    int32_t stored;
    if (region == nullptr || cfgRead(kRadioRegion.section, kRadioRegion.name, &stored) != 0) return -1;
    *region = stored;
    return 0;
}
