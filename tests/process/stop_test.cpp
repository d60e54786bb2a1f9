// Signals while the daemon runs, and its orderly end.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include "camera/pending_actions.h"
#include "process/daemon_run.h"
#include "service/service_state.h"
#include "service/signals.h"
#include "support/captured_stderr.h"
#include "support/child_process.h"
#include "upgrade/download_state.h"

namespace unit {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kStart = "[QVP][qvp][main][Line: 312]: QVP Client Start with interface:[eth0]";
const std::string kStop = "[QVP][qvp][main][Line: 744]: QVP Client Stop";

std::string signalLine(int number) {
    return "[QVP][qvp][signal_handler][Line: 74] signal:[" + std::to_string(number) + "]";
}

class Stop : public DaemonTest {
protected:
    static Bytes discovery() { return headerOnly(command(primaryFamily(), "discovery")); }

    // The events behind the first that begins so.
    static fake::Events behind(const std::string& prefix) {
        fake::Events events = fake::events();
        const auto found = std::find_if(events.begin(), events.end(), [&](const std::string& event) {
            return event.compare(0, prefix.size(), prefix) == 0;
        });
        return found == events.end() ? fake::Events{"no " + prefix} : fake::Events(found + 1, events.end());
    }
};

TEST_F(Stop, ComesWithSigtermOrSigintDuringTheWait) {
    const std::pair<int, std::string> rows[] = {
        {SIGTERM, "[QVP][qvp][signal_handler][Line: 86]: Terminated"},
        {SIGINT, "[QVP][qvp][signal_handler][Line: 82]: Interrupted"},
    };
    for (const auto& [number, line] : rows) {
        SetUp();
        fake::deliverSignal(number);
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.serviceTrace(), ElementsAre(kStart, signalLine(number), line, kStop));
        EXPECT_THAT(fake::eventsOf({"wait"}), ElementsAre("wait"));
    }
}

TEST_F(Stop, ReleasesEverythingInOrder) {
    runDaemon();
    EXPECT_THAT(behind("wait"),
                ElementsAre("setitimer ITIMER_REAL first 0.000000 interval 0.000000", "close socket", "free #1",
                            "free #2", "free #3", "free #4", "unlink /var/run/qvp-eth0.pid"));
}

TEST_F(Stop, IsNotLostWhenItComesJustBeforeTheWait) {
    fake::beforeWait([] { raise(SIGTERM); });
    fake::wakeForNothing();
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(fake::eventsOf({"wait", "recvfrom"}), ElementsAre("wait"));
}

TEST_F(Stop, IsNotHeldUpByDatagramsThatAreThereBeforeEveryWait) {
    fake::beforeWait([] { raise(SIGTERM); });
    for (int datagram = 0; datagram < 100; ++datagram) fake::deliver(discovery());
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.serviceTrace(), Contains("[QVP][qvp][signal_handler][Line: 86]: Terminated"));
    EXPECT_LE(fake::eventsOf({"recvfrom"}).size(), 16u);
    EXPECT_EQ(fake::sentTo("192.168.0.100:5000").size(), fake::eventsOf({"recvfrom"}).size());
}

// A scan takes seconds, a write to flash a good part of one: what comes meanwhile waits for one more of them at most.
TEST_F(Stop, IsNotHeldUpByManyScansOrWrites) {
    const std::pair<const char*, Packet> rows[] = {
        {"getSiteList", request(command(primaryFamily(), "init_wifi_site_survey"))},
        {"cfgWrite", request(command(primaryFamily(), "set_network_adv_info")).put(279, {1, 1})},
    };
    for (const auto& [work, asked] : rows) {
        SetUp();
        fake::onEvent(work, [] { raise(SIGTERM); });
        for (int datagram = 0; datagram < 10; ++datagram) fake::deliver(asked.bytes());
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.serviceTrace(), Contains("[QVP][qvp][signal_handler][Line: 86]: Terminated")) << work;
        EXPECT_EQ(fake::eventsOf({"recvfrom"}).size(), 2u) << work;
    }
}

TEST_F(Stop, DuringACommandComesOnceItsReplyHasLeft) {
    fake::deliver(discovery());
    fake::onEvent("cfgRead INFO BrandName", [] { raise(SIGTERM); });
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(fake::sentTo("192.168.0.100:5000").size(), 1u);
    EXPECT_THAT(run.serviceTrace(), Contains("[QVP][qvp][signal_handler][Line: 86]: Terminated"));
    EXPECT_THAT(fake::eventsOf({"wait"}), ElementsAre("wait", "wait"));
}

TEST_F(Stop, DuringADeferredCommandComesOnceAllAreRun) {
    fake::beforeWait([] { g_nNetworkReset = g_nWebServerReset = 1; });
    fake::deliver(discovery());
    fake::onEvent("system /usr/sbin/msger", [] { kill(getppid(), SIGTERM); });
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(fake::commands().size(), 2u);
    EXPECT_THAT(fake::eventsOf({"wait"}), ElementsAre("wait"));
}

TEST_F(Stop, ComesAfterAWaitThatFails) {
    for (const int error : {EBADF, ENOMEM}) {
        SetUp();
        fake::failWait(error);
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.serviceTrace(),
                    ElementsAre(kStart, "[QVP][qvp][main][Line: 329]: select has some problem", kStop));
        EXPECT_THAT(fake::eventsOf({"unlink"}), ElementsAre("unlink /var/run/qvp-eth0.pid"));
    }
}

TEST_F(Stop, WaitsForARunningWorkerAndFreesWhatItLeft) {
    fake::beforeWait([] {
        g_stDownThread.status = 1;
        g_stDownThread.data = static_cast<decltype(g_stDownThread.data)>(std::malloc(33));
        g_stDownThread.data_length = 33;
        fake::onEvent("usleep 200", [] {
            fake::record("stop_request " + std::to_string(g_stDownThread.stop_request));
            fake::onEvent("usleep 200", [] { g_stDownThread.status = 0; });
        });
    });
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_THAT(behind("malloc 33"), ElementsAre("setitimer ITIMER_REAL first 0.000000 interval 0.000000", "usleep 200",
                                                 "stop_request 1", "usleep 200", "free #5", "close socket", "free #1",
                                                 "free #2", "free #3", "free #4", "unlink /var/run/qvp-eth0.pid"));
}

TEST_F(Stop, EndsAtOnceWithoutAWorker) {
    runDaemon();
    EXPECT_THAT(fake::eventsOf({"usleep"}), IsEmpty());
}

TEST_F(Stop, ForgetsAWorkersRecordFromBefore) {
    g_stDownThread.status = 2;
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_THAT(fake::eventsOf({"usleep"}), IsEmpty());
    g_stDownThread.status = 0;
}

TEST_F(Stop, LetsNoReportGoOutAnyMore) {
    fake::onEvent("setitimer ITIMER_REAL first 0.000000", [] { raise(SIGALRM); });
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_EQ(fake::sent().size(), 1u);  // the one at start-up
}

class Signals : public Stop {};

TEST_F(Signals, QuitAndUserOneAreTracedAndIgnored) {
    for (const int number : {SIGQUIT, SIGUSR1}) {
        SetUp();
        fake::deliverSignal(number);
        fake::deliver(discovery());
        fake::deliverSignal(SIGTERM);
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(fake::sentTo("192.168.0.100:5000").size(), 1u);
        EXPECT_EQ(run.serviceTrace()[1], signalLine(number));
        EXPECT_EQ(run.serviceTrace()[2], "[QVP][qvp][signal_handler][Line: 90]: Ignore signal");
    }
}

TEST_F(Signals, OthersHaveNoEffectAndNoTrace) {
    for (const int number : {SIGHUP, SIGABRT, SIGUSR2, SIGCHLD, SIGTSTP, SIGTTIN, SIGTTOU, SIGPIPE}) {
        SetUp();
        fake::deliverSignal(number);
        fake::deliver(discovery());
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0) << number;
        EXPECT_EQ(fake::sentTo("192.168.0.100:5000").size(), 1u) << number;
        EXPECT_EQ(run.serviceTrace()[1],
                  "[QVP][qvp][main][Line: 343]: QVP Client receive command from [192.168.0.100]");
    }
}

TEST_F(Signals, AlarmDuringTheWaitSendsTheNextReport) {
    fake::deliverSignal(SIGALRM);
    fake::deliverSignal(SIGALRM);
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    const std::vector<fake::Sent> reports = fake::sentTo("255.255.255.255:62976");
    ASSERT_EQ(reports.size(), 3u);
    for (std::size_t at = 0; at < 3; ++at) EXPECT_EQ(reports[at].bytes[2], at);
    EXPECT_THAT(run.serviceTrace(), testing::SizeIs(4));
}

TEST_F(Signals, AlarmDuringACommandWaitsForItsReply) {
    fake::deliver(discovery());
    fake::onEvent("cfgRead CAMSYSTEM CameraName", [] {
        fake::onEvent("cfgRead CAMSYSTEM CameraName", [] { raise(SIGALRM); });  // past the report at start-up
    });
    EXPECT_EQ(runDaemon().status, 0);
    const std::vector<fake::Sent> sent = fake::sent();
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[1].to, "192.168.0.100:5000");
    EXPECT_EQ(sent[2].to, "255.255.255.255:62976");
    EXPECT_EQ(sent[2].bytes[2], 1);
}

TEST_F(Signals, AlarmDuringAReportDoesNotNestAnother) {
    fake::onEvent("cfgRead CAMSYSTEM CameraName", [] { raise(SIGALRM); });
    EXPECT_EQ(runDaemon().status, 0);
    const std::vector<fake::Sent> reports = fake::sent();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].bytes[2], 0);
    EXPECT_EQ(reports[1].bytes[2], 1);
}

TEST_F(Signals, StopDuringAReportWaitsForTheReport) {
    fake::deliverSignal(SIGALRM);
    fake::onEvent("cfgRead CAMSYSTEM CameraName", [] {
        fake::onEvent("cfgRead CAMSYSTEM CameraName", [] {  // past the report at start-up
            raise(SIGTERM);
            fake::record("stopping " + std::to_string(g_nStopRunning));
        });
    });
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_THAT(fake::eventsOf({"stopping"}), ElementsAre("stopping 0"));
    EXPECT_EQ(fake::sent().size(), 2u);
    EXPECT_THAT(fake::eventsOf({"wait"}), ElementsAre("wait"));
}

TEST_F(Signals, AlarmDuringADeferredCommandIsServedDuringIt) {
    fake::beforeWait([] { g_nNetworkReset = 1; });
    fake::deliver(discovery());
    fake::onEvent("system /etc/init.d/ipv4", [] { kill(getppid(), SIGALRM); });
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_EQ(fake::sentTo("255.255.255.255:62976").size(), 2u);
}

// A request to follow NTP, whose wait a signal interrupts; what went on from that wait to the next for a datagram.
class NtpWait : public Signals {
protected:
    static fake::Events interruptedBy(int number) {
        fake::camera().wireIds = {{12, 20}};
        const CommandRow& row = command(primaryFamily(), "set_system_datetime");
        const Packet packet = request(row).put(150, std::string("00000000000000")).put(166, {20, 0, 0, 1});
        fake::deliver(packet.first(200));
        fake::interruptSleep(1, number);
        EXPECT_EQ(runDaemon().status, 0);
        fake::Events events = fake::eventsOf({"sleep", "sendto", "wait", "unlink"});
        events.erase(events.begin(), std::find_if(events.begin(), events.end(), [](const std::string& event) {
                         return event.compare(0, 5, "sleep") == 0;
                     }));
        for (std::string& event : events) event = event.substr(0, event.find(' '));
        return events;
    }
};

TEST_F(NtpWait, GoesOnAfterAReportInTheMiddleOfIt) {
    EXPECT_THAT(interruptedBy(SIGALRM), ElementsAre("sleep", "sendto", "sleep", "wait", "unlink"));
    EXPECT_EQ(fake::sentTo("255.255.255.255:62976").size(), 2u);
}

TEST_F(NtpWait, IsWaitedToItsEndBeforeAStop) {
    EXPECT_THAT(interruptedBy(SIGTERM), ElementsAre("sleep", "sleep", "unlink"));
}

// A run with a good dozen of commands.
class Commands : public Stop {
protected:
    static void runAll() {
        fake::beforeWait([] {
            g_nDeviceNameReset = g_nAuthReset = g_nWifiReset = g_nNetworkReset = g_nFactoryReset = g_nReboot = 1;
        });
        fake::deliver(discovery());
        EXPECT_EQ(runDaemon().status, 0);
        EXPECT_EQ(fake::commands().size(), 13u);
    }
};

TEST_F(Commands, StartWithNoneOfTheDaemonsSignalsBlockedOrIgnored) {
    runAll();
    EXPECT_EQ(fake::commandsWithBlockedSignals(), 0);
    EXPECT_EQ(fake::commandsWithIgnoredSignals(), 0);
}

// The window of a command closes with it: the clock is set behind another action's command, and reads the store.
TEST_F(Commands, LeaveNoSignalToTheStoreBehindThem) {
    fake::beforeWait([] { g_nNetworkReset = g_nResetTime = 1; });
    fake::deliver(discovery());
    EXPECT_EQ(runDaemon().status, 0);
    const fake::Events order = behind("system /etc/init.d/ipv4");
    EXPECT_THAT(order, Contains("cfgRead DATETIME TimeZone"));
    EXPECT_EQ(fake::storeCallsWithOpenSignals(), 0);
}

// Not even for the process that waits for the command, which close-on-exec does not reach.
TEST_F(Commands, StartWithoutTheDaemonsDescriptors) {
    runAll();
    EXPECT_EQ(fake::commandsWithOpenDescriptors(), 0);
    EXPECT_THAT(fake::eventsOf({"close_range"}),
                testing::AllOf(testing::SizeIs(13), testing::Each("close_range 3 4294967295 0")));
}

TEST_F(Commands, StartWithoutThemOnAKernelThatClosesOneByOne) {
    fake::failCall("close_range", 1, ENOSYS);
    runAll();
    EXPECT_EQ(fake::commandsWithOpenDescriptors(), 0);
}

TEST_F(Signals, UserOneIsIgnoredAfterAnAdministratorChange) {
    const CommandRow& change = command(primaryFamily(), "change_admin_id_pwd");
    fake::deliver(request(change).first(278));
    fake::deliverSignal(SIGUSR1);
    fake::deliverSignal(SIGTERM);
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.serviceTrace(), testing::Not(Contains(signalLine(SIGUSR1))));
    EXPECT_THAT(run.serviceTrace(), Contains(signalLine(SIGTERM)));
}

// Standard error on a device that is always full, for as long as an object of this kind lives: a trace fails, and says
// so in errno.
class FullStderr {
public:
    FullStderr() : original_(dup(STDERR_FILENO)) {
        const int full = open("/dev/full", O_WRONLY);
        if (full < 0 || original_ < 0 || dup2(full, STDERR_FILENO) < 0) std::abort();
        close(full);
    }
    ~FullStderr() {
        dup2(original_, STDERR_FILENO);
        close(original_);
    }
    FullStderr(const FullStderr&) = delete;
    FullStderr& operator=(const FullStderr&) = delete;

private:
    int original_;
};

// In a child: what found no room would be told in front of the next line of this program.
TEST(SignalHandler, LeavesErrnoToWhatItInterrupts) {
    for (const int number : {SIGQUIT, SIGTERM}) {
        const int status = inChild([number] {
            const FullStderr full;
            errno = EDOM;
            signal_handler(number);
            EXPECT_EQ(errno, EDOM);
        });
        EXPECT_EQ(status, 0) << number;
    }
}

TEST(SignalHandler, WouldTakeAHangUpForAStop) {
    g_nStopRunning = 0;
    const CapturedStderr captured;
    signal_handler(SIGHUP);
    EXPECT_EQ(captured.text(), "[QVP][qvp][signal_handler][Line: 74] signal:[" + std::to_string(SIGHUP) +
                                   "]\n[QVP][QVP_CLIENT][qvp][signal_handler][Line: 78]: Hanged up\n");
    EXPECT_EQ(g_nStopRunning, 1);
    g_nStopRunning = 0;
}

TEST(DownloadState, IsStoppedAndAskedThroughItsTwoOperations) {
    DownThreadState state{};
    EXPECT_EQ(get_download_file_status(&state), 0);
    for (const int status : {1, 2}) {
        state.status = status;
        EXPECT_EQ(get_download_file_status(&state), status);
    }
    EXPECT_EQ(stop_download_file(&state), 0);
    EXPECT_EQ(state.stop_request, 1);
    EXPECT_EQ(state.status, 2);
    EXPECT_EQ(get_download_file_status(nullptr), -1);
    EXPECT_EQ(stop_download_file(nullptr), -1);
}

}  // namespace
}  // namespace unit
