#include "upgrade/thread_calls.h"

#include <errno.h>
#include <signal.h>

#include <atomic>
#include <utility>

#include "fake_platform.h"
#include "parts.h"
#include "upgrade/download_state.h"
#include "upgrade/download_url.h"

namespace worker {
namespace {

constexpr std::size_t kLargestBlock = 64 << 20;

std::vector<ThreadMade> g_made;  // with the rest up to g_ended: of the thread that starts workers
int g_destroyed = 0;
std::function<void()> g_beforeWork;
bool g_urlsStartAtHost = false;
std::atomic<int> g_ended = 0;
std::atomic<pthread_t> g_last{};

struct Work {
    void* (*run)(void*);
    void* argument;
    std::function<void()> before;
};

void* runWork(void* pointer) {
    auto* work = static_cast<Work*>(pointer);
    g_last.store(pthread_self(), std::memory_order_relaxed);
    if (work->before) work->before();
    void* result = work->run(work->argument);
    delete work;
    g_ended.fetch_add(1, std::memory_order_relaxed);
    return result;
}

// SIGKILL and SIGSTOP cannot be blocked. The real-time signals are nobody's, and emulators do not keep all of them.
std::vector<int> openSignals() {
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    std::vector<int> open;
    for (int number = 1; number < 32; ++number) {
        if (number == SIGKILL || number == SIGSTOP) continue;
        if (sigismember(&blocked, number) == 0) open.push_back(number);
    }
    return open;
}

}  // namespace

std::vector<ThreadMade> threadsMade() { return g_made; }

int attributesDestroyed() { return g_destroyed; }

int threadsEnded() { return g_ended.load(std::memory_order_relaxed); }

pthread_t lastThread() { return g_last.load(std::memory_order_relaxed); }

void beforeWork(std::function<void()> action) { g_beforeWork = std::move(action); }

void takeUrlsFromTheHost() { g_urlsStartAtHost = true; }

void resetThreads() {
    g_made.clear();
    g_destroyed = 0;
    g_beforeWork = nullptr;
    g_urlsStartAtHost = false;
    g_ended.store(0, std::memory_order_relaxed);
}

}  // namespace worker

using namespace worker;

extern "C" {

int __real_pthread_create(pthread_t* out, const pthread_attr_t* attributes, void* (*run)(void*), void* argument);
int __real_pthread_attr_init(pthread_attr_t* attributes);
int __real_pthread_attr_setdetachstate(pthread_attr_t* attributes, int state);
int __real_pthread_attr_destroy(pthread_attr_t* attributes);
void* __real_calloc(std::size_t count, std::size_t size);
UrlResult __real__Z9takeApartRA256_cR11DownloadUrl(char (&url)[256], DownloadUrl& out);

int __wrap_pthread_create(pthread_t* out, const pthread_attr_t* attributes, void* (*run)(void*), void* argument) {
    int detached = PTHREAD_CREATE_JOINABLE;
    if (attributes != nullptr) pthread_attr_getdetachstate(attributes, &detached);
    if (fake::callFails("pthread_create")) return errno;
    const auto* record = static_cast<const DownThreadState*>(argument);
    g_made.push_back({detached == PTHREAD_CREATE_DETACHED, openSignals(), record->stop_request});
    return __real_pthread_create(out, attributes, runWork, new Work{run, argument, g_beforeWork});
}

int __wrap_pthread_attr_init(pthread_attr_t* attributes) {
    return fake::callFails("pthread_attr_init") ? errno : __real_pthread_attr_init(attributes);
}

int __wrap_pthread_attr_setdetachstate(pthread_attr_t* attributes, int state) {
    return fake::callFails("pthread_attr_setdetachstate") ? errno
                                                          : __real_pthread_attr_setdetachstate(attributes, state);
}

int __wrap_pthread_attr_destroy(pthread_attr_t* attributes) {
    ++g_destroyed;
    const int result = __real_pthread_attr_destroy(attributes);
    return fake::callFails("pthread_attr_destroy") ? errno : result;
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    if (fake::callFails("calloc") || count * size > kLargestBlock) {
        errno = ENOMEM;
        return nullptr;
    }
    return __real_calloc(count, size);
}

UrlResult __wrap__Z9takeApartRA256_cR11DownloadUrl(char (&url)[256], DownloadUrl& out) {
    return g_urlsStartAtHost ? takeHostApart(url, out) : __real__Z9takeApartRA256_cR11DownloadUrl(url, out);
}

}  // extern "C"
