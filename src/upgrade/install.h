// What becomes of a download. Both return 0, or -1; null data or a length below 1 is refused.
#pragma once

#include <stdint.h>

// Deciphers a configuration archive in place and installs it.
int decode_and_unpack_config(uint8_t* data, int32_t length);

// Checks a firmware image, stops what would disturb, keeps the configuration and writes the image.
int verify_and_upgrade_firmware(uint8_t* data, int32_t length);
