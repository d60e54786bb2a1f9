#include "upgrade/conditions.h"

#include <poll.h>

namespace worker {

bool waitUntil(const std::function<bool()>& condition) {
    for (int milliseconds = 0; milliseconds < 30000; ++milliseconds) {
        if (condition()) return true;
        poll(nullptr, 0, 1);
    }
    return condition();
}

}  // namespace worker
