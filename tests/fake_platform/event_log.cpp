#include "event_log.h"

#include <pthread.h>
#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iomanip>
#include <sstream>
#include <utility>

#include "fake_platform.h"
#include "parts.h"

namespace fake {
namespace {

constexpr std::size_t kRoom = 4 << 20;

struct SharedLog {
    pthread_mutex_t mutex;
    std::size_t used;
    int counters[4];
    char text[kRoom];  // events, each with a NUL behind it
};

SharedLog* newLog() {
    void* memory = mmap(nullptr, sizeof(SharedLog), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("event log");
        std::abort();
    }
    auto* log = static_cast<SharedLog*>(memory);
    pthread_mutexattr_t shared;
    pthread_mutexattr_init(&shared);
    pthread_mutexattr_setpshared(&shared, PTHREAD_PROCESS_SHARED);
    pthread_mutex_init(&log->mutex, &shared);
    pthread_mutexattr_destroy(&shared);
    return log;
}

SharedLog& sharedLog() {
    static SharedLog* const log = newLog();
    return *log;
}

// Made before main, so that no child can make one of its own.
[[maybe_unused]] SharedLog& g_madeAtStart = sharedLog();

// What onEvent asked for; guarded by the log's mutex.
std::string g_prefix;
std::function<void()> g_action;

class Lock {
public:
    Lock() { pthread_mutex_lock(&sharedLog().mutex); }
    ~Lock() { pthread_mutex_unlock(&sharedLog().mutex); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
};

}  // namespace

static bool appendIfItFits(const std::string& plain) {
    Lock lock;
    SharedLog& log = sharedLog();
    if (plain.size() + 1 > kRoom - log.used) return false;
    std::memcpy(log.text + log.used, plain.c_str(), plain.size() + 1);
    log.used += plain.size() + 1;
    return true;
}

// A full log ends the process that filled it, with the lock free for the one that waits for it.
static void append(const std::string& event) {
    const std::string plain = event.substr(0, event.find('\0'));
    if (appendIfItFits(plain)) return;
    std::fprintf(stderr, "event log full at: %.200s\n", plain.c_str());
    std::abort();
}

static void runAction(const std::string& event) {
    std::function<void()> action;
    {
        Lock lock;
        if (g_action == nullptr || event.compare(0, g_prefix.size(), g_prefix) != 0) return;
        std::swap(action, g_action);
    }
    action();
}

void appendEvent(const std::string& event) {
    append(event);
    runAction(event);
}

void onEvent(const std::string& prefix, std::function<void()> action) {
    Lock lock;
    g_prefix = prefix;
    g_action = std::move(action);
}

void resetActions() {
    Lock lock;
    g_action = nullptr;
}

std::vector<std::string> readEvents() {
    Lock lock;
    const SharedLog& log = sharedLog();
    std::vector<std::string> events;
    for (std::size_t at = 0; at < log.used; at += events.back().size() + 1) events.emplace_back(log.text + at);
    return events;
}

void clearEventLog() {
    Lock lock;
    sharedLog().used = 0;
    for (int& counter : sharedLog().counters) counter = 0;
}

void increment(Counter counter) {
    Lock lock;
    ++sharedLog().counters[static_cast<int>(counter)];
}

int count(Counter counter) {
    Lock lock;
    return sharedLog().counters[static_cast<int>(counter)];
}

Events events() { return readEvents(); }

Events eventsOf(const std::vector<std::string>& functions) {
    Events matching;
    for (const std::string& event : readEvents()) {
        const std::string function = event.substr(0, event.find(' '));
        for (const std::string& wanted : functions) {
            if (function == wanted) matching.push_back(event);
        }
    }
    return matching;
}

Events writes() { return eventsOf({"cfgWrite"}); }

Events commands() {
    Events lines = eventsOf({"system"});
    for (std::string& line : lines) line.erase(0, std::string("system ").size());
    return lines;
}

void clearEvents() { clearEventLog(); }

void record(const std::string& event) { appendEvent(event); }

std::string quoted(const std::string& text) {
    std::ostringstream out;
    out << '"';
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 32 || byte > 126) {
            out << "\\x" << std::hex << std::uppercase << std::setw(2) << std::setfill('0') << int{byte};
        } else {
            if (character == '"' || character == '\\') out << '\\';
            out << character;
        }
    }
    out << '"';
    return out.str();
}

int commandsWithBlockedSignals() { return count(Counter::BlockedSignals); }

int commandsWithIgnoredSignals() { return count(Counter::IgnoredSignals); }

int commandsWithOpenDescriptors() { return count(Counter::OpenDescriptors); }

int storeCallsWithOpenSignals() { return count(Counter::InterruptibleStore); }

}  // namespace fake
