// Where events are kept: memory that the children of the test program share with it, so that what a forked child asks
// for (a shell command above all) stands in the same order in the same log.
#pragma once

#include <string>
#include <vector>

namespace fake {

void appendEvent(const std::string& event);
std::vector<std::string> readEvents();
void clearEventLog();

// Counters with the same reach.
enum class Counter { BlockedSignals, IgnoredSignals, OpenDescriptors, InterruptibleStore };
void increment(Counter counter);
int count(Counter counter);

}  // namespace fake
