// Waiting for something to become true, without guessing how long it takes.
#pragma once

#include <functional>

namespace worker {

// Asks every millisecond. False after 30 seconds, far beyond what any of these tests takes.
bool waitUntil(const std::function<bool()>& condition);

}  // namespace worker
