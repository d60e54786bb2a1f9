// Fields that more than one datagram carries, straight from their source.
#pragma once

#include "camera/settings.h"
#include "util/packet.h"

// A text of the store, at most `most` bytes of it.
template <size_t Size>
void putStoredText(uint8_t (&field)[Size], TextKey key, size_t most = Size) {
    char text[kTextSize];
    read(key, text);
    putText(field, text, most);
}

// A text field that always ends with a NUL.
template <size_t Size>
void putEndedText(uint8_t (&field)[Size], TextKey key) {
    putStoredText(field, key, Size - 1);
}

// "<main>.<minor>", the minor number with at least two digits.
void putFirmwareVersion(uint8_t (&field)[32]);

// "YYYYMMDDhhmmss" of this moment, in the system's time zone; left as it is when there is no such date.
void putLocalTime(uint8_t* field);

// The stored zone in the tools' numbering; 0 when it has none.
Le16 storedTimezone();
