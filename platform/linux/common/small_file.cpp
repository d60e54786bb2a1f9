#include "common/small_file.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

ssize_t readUpTo(int descriptor, char* bytes, size_t capacity) {
    size_t length = 0;
    while (length < capacity) {
        ssize_t count = read(descriptor, bytes + length, capacity - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return -1;
        if (count == 0) break;
        length += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(length);
}

int writeAll(int descriptor, const char* bytes, size_t length) {
    while (length > 0) {
        ssize_t count = write(descriptor, bytes, length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return -1;
        bytes += count;
        length -= static_cast<size_t>(count);
    }
    return 0;
}

ssize_t readSmallFile(const char* path, char* text, size_t capacity) {
    int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return -1;
    ssize_t length = readUpTo(descriptor, text, capacity - 1);
    int reason = errno;
    close(descriptor);
    errno = reason;
    if (length >= 0) text[length] = '\0';
    return length;
}
