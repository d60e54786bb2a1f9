// The worker's thread as it is made, caught at link time, and other calls that a test makes fail.
//
// Fail on request (fake::failCall): pthread_attr_init, pthread_attr_setdetachstate, pthread_attr_destroy,
// pthread_create, calloc. calloc has a small board's memory: no more than 64 MiB in one piece.
#pragma once

#include <pthread.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace worker {

// One pthread_create() of the daemon's.
struct ThreadMade {
    bool detached;
    std::vector<int> openSignals;  // that its creator left open, and so the thread has open
    std::uint8_t stopRequest;      // of its record
};

std::vector<ThreadMade> threadsMade();
int attributesDestroyed();

// Threads whose work has returned. Says nothing about what they wrote: it orders no memory, so that the sanitizer still
// sees what the daemon itself does not order.
int threadsEnded();

// The last thread's own id; after its end.
pthread_t lastThread();

// Runs in the next threads before their work.
void beforeWork(std::function<void()> action);

// Lets the worker take its address apart from the host on, as if the scheme had been there and gone.
void takeUrlsFromTheHost();

void resetThreads();

}  // namespace worker
