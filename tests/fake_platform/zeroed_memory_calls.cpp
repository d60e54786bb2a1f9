// calloc counts as malloc: an optimising compiler makes it of a malloc and the memset behind it. It stands alone here
// so that a test program may have one of its own.
#include <stdlib.h>

#include "parts.h"

extern "C" {

void* __real_calloc(size_t count, size_t size);

void* __wrap_calloc(size_t count, size_t size) {
    if (fake::allocationFails(count * size)) return nullptr;
    void* block = __real_calloc(count, size);
    fake::noteAllocation(block, count * size);
    return block;
}

}  // extern "C"
