// Starting the worker's thread.
#include <errno.h>
#include <pthread.h>
#include <signal.h>

#include <string>

#include "upgrade/conditions.h"
#include "upgrade/download_thread.h"
#include "upgrade/thread_calls.h"
#include "upgrade/worker_fixture.h"

namespace worker {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class ThreadStart : public WorkerTest {};

TEST_F(ThreadStart, NeedsARecord) {
    EXPECT_EQ(start_download_thread(nullptr, nullptr), -1);
    EXPECT_EQ(start_download_thread(nullptr, "configuration"), -1);
    EXPECT_THAT(threadsMade(), IsEmpty());
}

TEST_F(ThreadStart, RefusedWhileBusy) {
    for (const Kind kind : kBothKinds) {
        state.busy = 1;
        state.stop_request = 1;
        EXPECT_EQ(start(state, kind), -1);
        EXPECT_EQ(state.stop_request, 1);
        EXPECT_EQ(state.status, 0);
    }
    EXPECT_THAT(threadsMade(), IsEmpty());
    EXPECT_EQ(attributesDestroyed(), 0);
}

struct StartFailure {
    const char* function;
    int result, threads, destroyed;
    std::uint8_t stopRequest;
};

const StartFailure kStartFailures[] = {
    {"pthread_attr_init", -1, 0, 0, 1},
    {"pthread_attr_setdetachstate", -1, 0, 1, 1},
    {"pthread_create", 0, 0, 1, 0},
    {"pthread_attr_destroy", -1, 1, 1, 0},
};

TEST_F(ThreadStart, EachStepThatFails) {
    for (const Kind kind : kBothKinds) {
        for (const StartFailure& row : kStartFailures) {
            SCOPED_TRACE(std::string(nameOf(kind)) + ": " + row.function);
            resetThreads();
            state = {};
            state.stop_request = 1;
            fake::failCall(row.function, 1, EAGAIN);
            EXPECT_EQ(start(state, kind), row.result);
            waitForEnd(row.threads);
            EXPECT_THAT(threadsMade(), SizeIs(static_cast<std::size_t>(row.threads)));
            EXPECT_EQ(attributesDestroyed(), row.destroyed);
            EXPECT_EQ(state.stop_request, row.stopRequest);
            EXPECT_EQ(status(), row.threads == 0 ? 0 : 2);
        }
    }
}

TEST_F(ThreadStart, DetachedAndDeafToSignals) {
    for (const Kind kind : kBothKinds) {
        resetThreads();
        sigset_t original, before, after;
        sigemptyset(&before);
        sigaddset(&before, SIGUSR2);
        pthread_sigmask(SIG_SETMASK, &before, &original);
        run(kind);
        pthread_sigmask(SIG_SETMASK, &original, &after);
        ASSERT_THAT(threadsMade(), SizeIs(1));
        EXPECT_TRUE(threadsMade()[0].detached);
        EXPECT_THAT(threadsMade()[0].openSignals, IsEmpty());
        for (int number = 1; number < 32; ++number) {
            EXPECT_EQ(sigismember(&after, number), sigismember(&before, number)) << number;
        }
        EXPECT_NE(pthread_equal(state.thread, lastThread()), 0);
    }
}

TEST_F(ThreadStart, DeafUntilItsEnd) {
    fake::onEvent("SIWriteInt", [] {
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        for (const int number : {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGCHLD, SIGHUP, SIGPIPE}) {
            if (sigismember(&blocked, number) == 0) fake::record("open " + std::to_string(number));
        }
    });
    run(Kind::Firmware);
    EXPECT_THAT(fake::eventsOf({"SIWriteInt"}), SizeIs(1));
    EXPECT_THAT(fake::eventsOf({"open"}), IsEmpty());
}

TEST_F(ThreadStart, ClearsAnOldStopRequest) {
    for (const Kind kind : kBothKinds) {
        fake::clearEvents();
        setUrl(state, "nothing");
        stop_download_file(&state);
        run(kind);
        EXPECT_EQ(threadsMade().back().stopRequest, 0);
        EXPECT_EQ(state.stop_request, 0);
        EXPECT_EQ(status(), 2);
    }
}

TEST_F(ThreadStart, AgainAfterEachEnd) {
    for (int time = 1; time <= 20; ++time) {
        ASSERT_EQ(start(state, time % 2 == 0 ? Kind::Firmware : Kind::Configuration), 0);
        waitForEnd(time);
    }
    EXPECT_THAT(threadsMade(), SizeIs(20));
}

}  // namespace
}  // namespace worker
