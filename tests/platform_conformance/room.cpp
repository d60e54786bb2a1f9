#include "room.h"

#include <fcntl.h>
#include <string.h>

void* prepare(Room& room, size_t size, uint8_t filling) {
    memset(room.bytes, filling, kGuard + size + kGuard);
    room.size = size;
    return inside(room);
}

uint8_t* inside(Room& room) { return room.bytes + kGuard; }

static bool areAll(const uint8_t* bytes, size_t length, uint8_t filling) {
    for (size_t at = 0; at < length; at++) {
        if (bytes[at] != filling) return false;
    }
    return true;
}

bool isUntouched(const Room& room, uint8_t filling) { return areAll(room.bytes + kGuard, room.size, filling); }

static bool isIntact(const Room& room, uint8_t filling) {
    return areAll(room.bytes, kGuard, filling) && areAll(room.bytes + kGuard + room.size, kGuard, filling);
}

bool holdsValue(const Room& room, int result, const char* what, uint8_t filling) {
    if (!isIntact(room, filling)) fail("%s: writes beyond the %zu bytes that it has", what, room.size);
    if (result == 0) return true;
    if (result != -1) fail("%s: returns %d, which is neither 0 nor -1", what, result);
    if (result == -1 && !isUntouched(room, filling)) fail("%s: returns -1, but has written", what);
    return false;
}

int openDescriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < 1024; descriptor++) {
        if (fcntl(descriptor, F_GETFD) >= 0) count++;
    }
    return count;
}
