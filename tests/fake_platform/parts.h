// What the fake's files share.
#pragma once

#include <cstddef>
#include <string>

namespace fake {

// Counts a call of a function; true, with errno set, when a test asked for this one to fail.
bool callFails(const std::string& function);

void resetStore();
void resetActions();
void resetFailures();
void resetClock();
void resetScript();
void resetMemory();
void emptyRunFolder();

// What every way to allocate does before and after it asks the system.
bool allocationFails(std::size_t size);
void noteAllocation(void* block, std::size_t size);

// True while scripted_network.h has taken over the socket calls.
bool networkIsScripted();

// The daemon's socket, -1 without one.
int scriptedSocket();

// A path of the daemon's, as it is really opened: /var/run stands in a folder of the test's own.
std::string realPath(const char* path);

}  // namespace fake
