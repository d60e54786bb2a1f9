#include <stdint.h>

#include "platform.h"
#include "store_keys.h"

// Returns 0 with the driver's list in the buffer, columns as platform.h says and a NUL within `size` bytes, or -1 with
// the buffer untouched. This board has no radio. It may take seconds: no request is answered meanwhile.
int getSiteList(char*, int) { return -1; }

// Returns 0, or -1 with *region untouched. The number is the name of a section in /etc/wifi_channel.ini, whose fields
// are the channels that may be set.
int HWMIB_getRegion(int* region) {
    int32_t stored;
    if (cfgRead(kRadioRegion.section, kRadioRegion.name, &stored) != 0) return -1;
    *region = stored;
    return 0;
}
