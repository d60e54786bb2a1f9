// Work that takes its time, each on a thread of its own.
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

class Jobs {
public:
    static constexpr size_t kMost = 48;

    ~Jobs() { close(); }

    // False when there are too many, or no more are taken. It must not throw.
    bool start(std::function<void()> work);

    // Takes no more, and returns when all are over: whoever calls has told them to hurry.
    void close();

private:
    struct Job {
        std::atomic<bool> isOver{false};
        std::thread thread;
    };

    void sweep();

    std::mutex mutex_;
    std::list<Job> jobs_;
    bool isClosed_ = false;
};
