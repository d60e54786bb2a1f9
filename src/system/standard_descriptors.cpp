#include "system/standard_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

void openStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; descriptor++) {
        if (fcntl(descriptor, F_GETFD) < 0) open("/dev/null", O_RDWR);  // takes the lowest that is free: this one
    }
}
