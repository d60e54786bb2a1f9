#include "small_file.h"

#include <fcntl.h>
#include <unistd.h>

int readSmallFile(const char* path, char* text, size_t size) {
    int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return -1;
    size_t length = 0;
    ssize_t count = 0;
    while (length < size && (count = read(descriptor, text + length, size - length)) > 0) {
        length += static_cast<size_t>(count);
    }
    close(descriptor);
    if (count < 0 || length == size) return -1;
    text[length] = '\0';
    return static_cast<int>(length);
}

int writeAll(int descriptor, const char* bytes, size_t length) {
    while (length > 0) {
        ssize_t count = write(descriptor, bytes, length);
        if (count < 0) return -1;
        bytes += count;
        length -= static_cast<size_t>(count);
    }
    return 0;
}
