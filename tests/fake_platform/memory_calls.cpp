// malloc and free of the linked objects; the C++ library's own do not come by here.
#include <errno.h>
#include <stdlib.h>

#include <map>
#include <mutex>
#include <string>

#include "event_log.h"
#include "parts.h"
#include "scripted_network.h"

namespace fake {
namespace {

struct Memory {
    std::mutex mutex;
    std::map<void*, int> blocks;  // by order of allocation
    int allocations = 0;
};

Memory& memory() {
    static Memory memory;
    return memory;
}

}  // namespace

bool allocationFails(std::size_t size) {
    if (!callFails("malloc")) return false;
    appendEvent("malloc " + std::to_string(size) + " fails");
    errno = ENOMEM;
    return true;
}

void noteAllocation(void* block, std::size_t size) {
    if (!networkIsScripted()) return;
    const std::lock_guard lock(memory().mutex);
    memory().blocks[block] = ++memory().allocations;
    appendEvent("malloc " + std::to_string(size) + " #" + std::to_string(memory().allocations));
}

void resetMemory() {
    const std::lock_guard lock(memory().mutex);
    memory().blocks.clear();
    memory().allocations = 0;
}

}  // namespace fake

using namespace fake;

extern "C" {

void* __real_malloc(size_t size);
void __real_free(void* block);

void* __wrap_malloc(size_t size) {
    if (allocationFails(size)) return nullptr;
    void* block = __real_malloc(size);
    noteAllocation(block, size);
    return block;
}

void __wrap_free(void* block) {
    if (networkIsScripted() && block != nullptr) {
        const std::lock_guard lock(memory().mutex);
        const auto found = memory().blocks.find(block);
        if (found != memory().blocks.end()) {
            appendEvent("free #" + std::to_string(found->second));
            memory().blocks.erase(found);
        }
    }
    __real_free(block);
}

}  // extern "C"
