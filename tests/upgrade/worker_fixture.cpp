#include "upgrade/worker_fixture.h"

#include <csignal>
#include <cstdlib>
#include <cstring>

#include "upgrade/conditions.h"
#include "upgrade/download_thread.h"
#include "upgrade/thread_calls.h"

namespace worker {

const char* nameOf(Kind kind) { return kind == Kind::Configuration ? "configuration" : "firmware"; }

void setUrl(DownThreadState& state, const std::string& url) {
    std::memset(state.url, 0, sizeof state.url);
    url.copy(state.url, sizeof state.url);
}

int start(DownThreadState& state, Kind kind) {
    return start_download_thread(&state, kind == Kind::Configuration ? "configuration" : nullptr);
}

fake::Events effects() {
    return fake::eventsOf({"gethostbyname", "connect", "cfgAesDecode", "unpackCFG", "VerifyFWCode", "UpgradeFWCode",
                           "SIWriteInt", "system", "execv", "sleep", "usleep", "nanosleep"});
}

void Fresh::SetUp() {
    for (const int number : {SIGINT, SIGQUIT}) {
        std::signal(number, SIG_DFL);  // a shell ignores them for what it runs with '&'
    }
    fake::reset();
    planNetwork({});
    resetThreads();
}

void Fresh::TearDown() {
    planNetwork({});
    resetThreads();
}

void WorkerTest::TearDown() {
    std::free(state.data);
    EXPECT_EQ(fake::commandsWithBlockedSignals(), 0);
    EXPECT_EQ(fake::commandsWithIgnoredSignals(), 0);
    EXPECT_EQ(fake::commandsWithOpenDescriptors(), 0);
    Fresh::TearDown();
}

void WorkerTest::waitForEnd(int threads) {
    ASSERT_TRUE(waitUntil([=] { return threadsEnded() == threads; })) << "the worker does not end";
    ASSERT_EQ(busy(), 0);
}

void WorkerTest::run(Kind kind) {
    const int before = threadsEnded();
    ASSERT_EQ(start(state, kind), 0);
    waitForEnd(before + 1);
}

std::uint8_t* oldDownload() {
    auto* data = static_cast<std::uint8_t*>(std::malloc(8));
    std::memset(data, kOldByte, 8);
    return data;
}

Downloaded::~Downloaded() { std::free(data); }

}  // namespace worker
