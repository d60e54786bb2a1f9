// The upgrade worker's record, shared with the main thread, and its two control operations.
#pragma once

#include <pthread.h>
#include <stdint.h>

// `stop_request`, `busy` and `status` are read and written by both threads: only through loadShared and storeShared.
// The rest belongs to the worker while it runs.
struct DownThreadState {
    pthread_t thread;
    uint8_t stop_request;  // 1 asks the worker to give up
    uint8_t busy;          // 1 while a worker runs
    uint8_t* data;         // downloaded body, on the heap; null: none
    char url[256];         // NUL-terminated; lower-cased in place by the worker
    int32_t data_length;   // bytes of `data` to install; set by whoever starts the worker, who must know it in advance
    int32_t status;        // 0 idle or done, 1 running, 2 failed
};

extern DownThreadState g_stDownThread;

// Plain loads and stores on every machine the daemon runs on; they only keep the compiler and the memory in order.
template <typename Value>
Value loadShared(const Value& shared) {
    return __atomic_load_n(&shared, __ATOMIC_ACQUIRE);
}

template <typename Value>
void storeShared(Value& shared, int value) {
    __atomic_store_n(&shared, static_cast<Value>(value), __ATOMIC_RELEASE);
}

// Asks the worker to give up. Returns 0, or -1 for a null record.
int stop_download_file(DownThreadState* state);

// The record's `status`, or -1 for a null record.
int get_download_file_status(const DownThreadState* state);
