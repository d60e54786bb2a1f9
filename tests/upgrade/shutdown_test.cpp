// The whole daemon asked to stop while a worker runs. Each daemon is a child of its test, on the scripted network.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include "scripted_network.h"
#include "support/captured_stderr.h"
#include "upgrade/conditions.h"
#include "upgrade/http_server.h"
#include "upgrade/thread_calls.h"
#include "upgrade/worker_fixture.h"

int qvp_main(int argc, char* argv[]);

namespace worker {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::size_t drainSleeps() { return fake::eventsOf({"usleep"}).size(); }

// Where the first event that begins so stands; the log's size when there is none.
std::size_t placeOf(const std::string& prefix) {
    const fake::Events all = fake::events();
    const auto begins = [&](const std::string& event) { return event.compare(0, prefix.size(), prefix) == 0; };
    return static_cast<std::size_t>(std::find_if(all.begin(), all.end(), begins) - all.begin());
}

class Shutdown : public Fresh {
protected:
    void SetUp() override {
        Fresh::SetUp();
        fake::camera().interfaces["eth0"].mac = fake::Mac{0x02, 0x00, 0x5E, 0x10, 0x20, 0x30};
    }

    void TearDown() override {
        if (child_ > 0) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
        Fresh::TearDown();
    }

    // Starts a daemon that runs `whileServing` in its loop and is then sent SIGTERM.
    void startDaemon(const std::function<void()>& whileServing) {
        child_ = fork();
        ASSERT_GE(child_, 0);
        if (child_ == 0) _exit(runDaemon(whileServing) & 0xFF);
    }

    // Its exit status; 1000 and the number when a signal ended it.
    int exitStatus() {
        int status = 0;
        waitpid(child_, &status, 0);
        child_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    }

private:
    static int runDaemon(const std::function<void()>& whileServing) {
        fake::scriptNetwork();
        fake::beforeWait(whileServing);
        char name[] = "qvp";
        char interface[] = "eth0";
        char* arguments[] = {name, interface, nullptr};
        const int status = qvp_main(2, arguments);
        fake::record(std::string("left ") + (g_stDownThread.data == nullptr ? "nothing " : "data ") +
                     std::to_string(g_stDownThread.data_length));
        return status;
    }

    pid_t child_ = 0;
};

const std::vector<std::string> kWholeTrace = {
    "[QVP][qvp][main][Line: 312]: QVP Client Start with interface:[eth0]",
    "[QVP][qvp_function][general_report][Line: N]",
    "[QVP][qvp][signal_handler][Line: 74] signal:[15]",
    "[QVP][qvp][signal_handler][Line: 86]: Terminated",
    "[QVP][qvp][main][Line: 744]: QVP Client Stop",
};

// By lines; the presence report's line number is not fixed.
std::vector<std::string> traceIn(const std::string& standardError) {
    static const std::regex report(R"(\[general_report\]\[Line: \d+\])");
    return unit::linesOf(std::regex_replace(standardError, report, "[general_report][Line: N]"));
}

void startWorker(Kind kind, const std::string& url) {
    setUrl(g_stDownThread, url);
    g_stDownThread.data_length = 9;
    if (start(g_stDownThread, kind) != 0) std::abort();
    // A stop that comes before the first step would be another test.
    if (!waitUntil([] { return loadShared(g_stDownThread.busy) == 1; })) std::abort();
}

// The server answers once the daemon waits for its worker.
TEST_F(Shutdown, WaitsForADownload) {
    HttpServer server;
    NetworkPlan plan;
    plan.leadTo = server.port();
    planNetwork(plan);
    const unit::CapturedStderr captured;
    startDaemon([] { startWorker(Kind::Configuration, kGoodUrl); });
    server.serve([](Connection& connection) {
        connection.readRequest();
        waitUntil([] { return drainSleeps() >= 5; });
        fake::record("answer");
        connection.say(goodReply(""));
    });
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_EQ(traceIn(captured.text()), kWholeTrace);
    EXPECT_THAT(fake::eventsOf({"usleep"}), Each("usleep 200"));
    EXPECT_LT(placeOf("setitimer ITIMER_REAL first 0.000000"), placeOf("usleep"));
    EXPECT_LT(placeOf("usleep"), placeOf("answer"));
    EXPECT_LT(placeOf("answer"), placeOf("unpackCFG 9"));
    EXPECT_LT(placeOf("unpackCFG 9"), placeOf("unlink /var/run/qvp-eth0.pid"));
    EXPECT_THAT(fake::eventsOf({"left"}), ElementsAre("left nothing 0"));
}

TEST_F(Shutdown, WaitsForAnImageBeingWritten) {
    HttpServer server;
    NetworkPlan plan;
    plan.leadTo = server.port();
    planNetwork(plan);
    const unit::CapturedStderr captured;
    startDaemon([] {
        fake::onEvent("UpgradeFWCode", [] {
            waitUntil([] { return drainSleeps() >= 5; });
            fake::record("image written");
        });
        startWorker(Kind::Firmware, kGoodUrl);
    });
    server.serve([](Connection& connection) {
        connection.readRequest();
        connection.say(goodReply(""));
    });
    EXPECT_EQ(exitStatus(), 0);
    std::vector<std::string> trace = traceIn(captured.text());
    std::erase(trace, "kill the daemons that may effect firmware upgrading");
    std::erase(trace, "start firmware upgrading");
    EXPECT_EQ(trace, kWholeTrace);
    EXPECT_LT(placeOf("image written"), placeOf("SIWriteInt 4 2"));
    EXPECT_LT(placeOf("SIWriteInt 4 2"), placeOf("unlink /var/run/qvp-eth0.pid"));
    EXPECT_THAT(fake::eventsOf({"left"}), ElementsAre("left nothing 0"));
}

constexpr int kStillWaiting = 99;

// Ends the daemon's process, from within, at a wait of its drain.
void exitAtWait(int waits) {
    fake::onEvent("usleep", [waits] {
        if (waits == 1) _exit(kStillWaiting);
        exitAtWait(waits - 1);
    });
}

// A run that did not succeed keeps the daemon waiting.
TEST_F(Shutdown, GoesOnWaitingAfterAFailedRun) {
    struct Row {
        const char* name;
        Kind kind;
        bool stopped;
        const char* url;
    };
    const Row rows[] = {
        {"failed configuration", Kind::Configuration, false, "nothing"},
        {"failed firmware", Kind::Firmware, false, "nothing"},
        {"stopped firmware", Kind::Firmware, true, kGoodUrl},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        startDaemon([&] {
            if (row.stopped) beforeWork([] { stop_download_file(&g_stDownThread); });
            setUrl(g_stDownThread, row.url);
            if (start(g_stDownThread, row.kind) != 0) std::abort();
            waitUntil([] { return threadsEnded() == 1; });
            exitAtWait(100);
        });
        EXPECT_EQ(exitStatus(), kStillWaiting);
        EXPECT_EQ(drainSleeps(), 100u);
        EXPECT_THAT(fake::eventsOf({"unlink"}), IsEmpty());
        TearDown();
    }
}

TEST_F(Shutdown, EndsAtOnceWithoutAWorkerAndFreesItsData) {
    const unit::CapturedStderr captured;
    startDaemon([] {
        g_stDownThread.data = static_cast<std::uint8_t*>(std::malloc(7777));
        g_stDownThread.data_length = 7777;
    });
    EXPECT_EQ(exitStatus(), 0);
    EXPECT_EQ(traceIn(captured.text()), kWholeTrace);
    EXPECT_EQ(drainSleeps(), 0u);
    EXPECT_THAT(fake::eventsOf({"left"}), ElementsAre("left nothing 0"));
    const fake::Events made = fake::eventsOf({"malloc"});
    ASSERT_THAT(made, Contains(StartsWith("malloc 7777 #")).Times(1));
    const std::string number = made.back().substr(made.back().find('#'));
    EXPECT_LT(placeOf("malloc 7777 " + number), placeOf("free " + number));
    EXPECT_LT(placeOf("free " + number), placeOf("close socket"));
}

}  // namespace
}  // namespace worker
