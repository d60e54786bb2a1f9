// The order in which a run writes the flags that the main thread reads. The record lies across the border of two pages,
// the flags of one byte before it and the status behind it; only one of the pages may be written to at a time, so that
// each change from one to the other faults, and is noted.
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "upgrade/conditions.h"
#include "upgrade/thread_calls.h"
#include "upgrade/worker_fixture.h"

namespace worker {
namespace {

constexpr std::size_t kBeforeTheBorder = 64;
static_assert(offsetof(DownThreadState, stop_request) < kBeforeTheBorder);
static_assert(offsetof(DownThreadState, busy) < kBeforeTheBorder);
static_assert(offsetof(DownThreadState, status) >= kBeforeTheBorder);

struct Seen {
    int status, busy;
};

// What the fault's handler needs and leaves.
struct Watch {
    char* pages;
    std::size_t pageSize;
    DownThreadState* state;
    int stopAtWrite;  // counted from 1; 0: never
    Seen seen[32];    // in front of each write
};

Watch g_watch;
std::atomic<int> g_writes;  // hands the rest over, from the run to the test

void protect(bool second, int protection) {
    if (mprotect(g_watch.pages + (second ? g_watch.pageSize : 0), g_watch.pageSize, protection) != 0) _exit(1);
}

// A run has every signal blocked, and a blocked fault ends the process.
void letFaultsThrough() {
    sigset_t faults;
    sigemptyset(&faults);
    sigaddset(&faults, SIGSEGV);
    pthread_sigmask(SIG_UNBLOCK, &faults, nullptr);
}

void noteWrite(int, siginfo_t* info, void*) {
    const auto at = reinterpret_cast<std::size_t>(info->si_addr) - reinterpret_cast<std::size_t>(g_watch.pages);
    const int before = g_writes.load();
    if (at >= 2 * g_watch.pageSize || before == 32) _exit(2);  // a fault of another kind
    g_watch.seen[before] = {g_watch.state->status, g_watch.state->busy};
    if (before + 1 == g_watch.stopAtWrite) {
        protect(false, PROT_READ | PROT_WRITE);
        g_watch.state->stop_request = 1;
    }
    const bool second = at >= g_watch.pageSize;
    protect(!second, PROT_READ);
    protect(second, PROT_READ | PROT_WRITE);
    g_writes.store(before + 1);
}

class RecordOrder : public Fresh {
protected:
    void SetUp() override {
        Fresh::SetUp();
        const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        void* pages = mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) std::abort();
        char* border = static_cast<char*>(pages) + size;
        g_watch = {static_cast<char*>(pages), size, new (border - kBeforeTheBorder) DownThreadState{}, 0, {}};
        g_writes.store(0);
        struct sigaction action = {};
        action.sa_sigaction = noteWrite;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, &before_);
    }

    void TearDown() override {
        sigaction(SIGSEGV, &before_, nullptr);
        munmap(g_watch.pages, 2 * g_watch.pageSize);
        Fresh::TearDown();
    }

    // "status busy" in front of each write that changes one of them, and at the end.
    static std::string run(Kind kind, bool stopped, int stopAtWrite, const std::string& url) {
        DownThreadState& state = *g_watch.state;
        setUrl(state, url);
        g_watch.stopAtWrite = stopAtWrite;
        beforeWork([stopped, &state] {
            state.stop_request = stopped ? 1 : 0;
            letFaultsThrough();
            protect(false, PROT_READ);
            protect(true, PROT_READ);
        });
        EXPECT_EQ(start(state, kind), 0);
        EXPECT_TRUE(waitUntil([] { return threadsEnded() == 1; }));
        std::string values, last;
        const int writes = g_writes.load();
        for (int write = 0; write < writes; ++write) append(values, last, g_watch.seen[write]);
        append(values, last, {get_download_file_status(&state), loadShared(state.busy)});
        return values;
    }

private:
    static void append(std::string& values, std::string& last, Seen seen) {
        const std::string now = std::to_string(seen.status) + std::to_string(seen.busy);
        if (now != last) values += (values.empty() ? "" : " ") + now;
        last = now;
    }

    struct sigaction before_ = {};
};

struct RunRow {
    const char* name;
    Kind kind;
    bool stopped;
    std::string values;
};

const RunRow kRuns[] = {
    {"failed configuration", Kind::Configuration, false, "00 10 11 21 20"},
    {"failed firmware", Kind::Firmware, false, "00 10 11 21 20"},
    {"stopped configuration", Kind::Configuration, true, "00 10 11 21 20"},
    {"stopped firmware", Kind::Firmware, true, "00 10 11 10"},
};

TEST_F(RecordOrder, StatusBeforeBusyAtTheStartAndAtTheEnd) {
    for (const RunRow& row : kRuns) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(run(row.kind, row.stopped, 0, ""), row.values);
        TearDown();
        SetUp();
    }
}

// A run looks at the request once it is busy: the first write is its status, the second says that it is busy.
TEST_F(RecordOrder, StopIsLookedForBehindBoth) {
    for (const int write : {1, 2}) {
        for (const Kind kind : kBothKinds) {
            SCOPED_TRACE(std::string(nameOf(kind)) + " " + std::to_string(write));
            const bool firmware = kind == Kind::Firmware;
            EXPECT_EQ(run(kind, false, write, kGoodUrl), firmware ? "00 10 11 10" : "00 10 11 21 20");
            EXPECT_EQ(effects(), firmware ? fake::Events{"SIWriteInt 4 3"} : fake::Events{});
            TearDown();
            SetUp();
        }
    }
}

}  // namespace
}  // namespace worker
