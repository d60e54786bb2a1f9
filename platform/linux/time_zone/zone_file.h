// The time-zone file that C libraries read as /etc/localtime (TZif, RFC 8536).
#pragma once

#include <stdint.h>

constexpr int kZoneFileSize = 256;

// Makes the file of a POSIX text. Returns its length in bytes, or -1 when the text is too long.
int makeZoneFile(const char* text, uint8_t file[kZoneFileSize]);
