// From the command line to the first wait, and every way to fail in between.
#include <errno.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "process/daemon_run.h"
#include "service/service_state.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Start : public DaemonTest {
protected:
    static std::string pidFile(const std::string& interface) {
        return fake::runFolder() + "/qvp-" + interface + ".pid";
    }

    static std::string contentOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // What the daemon asks of the system, without what it reads for its reports.
    static fake::Events systemCalls() {
        return fake::eventsOf({"open", "unlink", "socket", "net_get_hwaddr", "setsockopt", "bind", "malloc", "free",
                               "sendto", "setitimer", "wait", "close", "system", "recvfrom"});
    }
};

TEST_F(Start, TakesExactlyOneArgument) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{}, {"eth0", "eth1"}, {"a", "b", "c"}}) {
        const DaemonRun run = runDaemon(arguments);
        EXPECT_EQ(run.status, 255);
        EXPECT_EQ(run.standardError, "[QVP][qvp][main][Line: 165]: Invalid parameter\n");
        EXPECT_THAT(fake::events(), IsEmpty());
        EXPECT_TRUE(std::filesystem::is_empty(fake::runFolder()));
    }
}

TEST_F(Start, GoesThroughItsStepsInOrder) {
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    fake::Events calls = systemCalls();
    for (std::string& call : calls) call = call.substr(0, call.find(" 317 "));
    EXPECT_THAT(
        calls,
        ElementsAre(
            "open /var/run/qvp-eth0.pid O_WRONLY|O_CREAT|O_EXCL 01204",
            "socket AF_INET SOCK_DGRAM IPPROTO_UDP close-on-exec", "net_get_hwaddr eth0", "net_get_hwaddr eth0",
            "setsockopt SOL_SOCKET SO_BINDTODEVICE 32 6574683000000000000000000000000000000000000000000000000000000000",
            "setsockopt SOL_SOCKET SO_BROADCAST 4 1", "setsockopt SOL_SOCKET SO_REUSEADDR 4 1", "bind 0.0.0.0:62976",
            "malloc 1024 #1", "malloc 1024 #2", "malloc 1024 #3", "malloc 21844 #4", "sendto 255.255.255.255:62976",
            "setitimer ITIMER_REAL first 30.000000 interval 30.000000", "wait",
            "setitimer ITIMER_REAL first 0.000000 interval 0.000000", "close socket", "free #1", "free #2", "free #3",
            "free #4", "unlink /var/run/qvp-eth0.pid"));
}

TEST_F(Start, SaysWhichInterfaceItServes) {
    EXPECT_EQ(runDaemon({"wlan7"}).serviceTrace().front(),
              "[QVP][qvp][main][Line: 312]: QVP Client Start with interface:[wlan7]");
}

TEST_F(Start, SendsTheFirstReportWithSequenceZero) {
    runDaemon();
    const std::vector<fake::Sent> sent = fake::sent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].bytes.size(), 317u);
    EXPECT_TRUE(sameBytes({0xFF, 0xFF, 0, 0, 0xA0, 0, 0x02, 0x00, 0x5E, 0x10, 0x20, 0x30},
                          {sent[0].bytes.begin(), sent[0].bytes.begin() + 12}));
}

TEST_F(Start, CutsTheInterfaceNameForTheKernelAtSixteenBytes) {
    EXPECT_EQ(runDaemon({"abcdefghijklmnopqrst"}).status, 0);
    EXPECT_THAT(fake::eventsOf({"open"}),
                ElementsAre("open /var/run/qvp-abcdefghijklmnopqrst.pid O_WRONLY|O_CREAT|O_EXCL 01204"));
    EXPECT_EQ(fake::eventsOf({"setsockopt"}).front(),
              "setsockopt SOL_SOCKET SO_BINDTODEVICE 32 "
              "6162636465666768696A6B6C6D6E6F7000000000000000000000000000000000");
}

TEST_F(Start, WritesItsProcessIdWithoutANewline) {
    fake::beforeWait([] {
        fake::record("pid " + contentOf(pidFile("eth0")));
        fake::record("really " + std::to_string(getpid()));
    });
    EXPECT_EQ(runDaemon().status, 0);
    const fake::Events written = fake::eventsOf({"pid"}), wanted = fake::eventsOf({"really"});
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].substr(4), wanted[0].substr(7));
    EXPECT_FALSE(std::filesystem::exists(pidFile("eth0")));
}

TEST_F(Start, StopsForAnotherInstanceOnTheInterface) {
    std::ofstream(pidFile("eth0")) << "4711";
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 255);
    EXPECT_EQ(run.standardError, "Error!! qvp(eth0) may be in running\n");
    EXPECT_EQ(contentOf(pidFile("eth0")), "4711");
    EXPECT_EQ(fake::events().size(), 1u);  // the open
    EXPECT_EQ(runDaemon({"eth1"}).status, 0);
    EXPECT_EQ(contentOf(pidFile("eth0")), "4711");
}

TEST_F(Start, StopsSilentlyWhenThePidFileCannotBeMade) {
    for (const int error : {EACCES, ENOENT, ENOSPC}) {
        fake::clearEvents();
        fake::failCall("open", 1, error);
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 255);
        EXPECT_EQ(run.standardError, "");
        EXPECT_EQ(fake::events().size(), 1u);
    }
}

TEST_F(Start, ClearsUpAfterEachStepThatFails) {
    const fake::Events closes{"close socket"};
    const struct {
        const char* function;
        int nth;
        const char* trace;
        fake::Events releases;
    } rows[] = {
        {"socket", 1, "[Line: 183]: create socket failed", {}},
        {"setsockopt", 1, "[Line: 212]: setsockopt: SO_BINDTODEVICE failed", closes},
        {"setsockopt", 2, "[Line: 220]: setsockopt: SO_BROADCAST failed", closes},
        {"setsockopt", 3, "[Line: 228]: setsockopt: SO_REUSEADDR failed", closes},
        {"bind", 1, "[Line: 235]: bind failed", closes},
        {"malloc", 1, "[Line: 245]: allocate recv buffer  failed", closes},
        {"malloc", 2, "[Line: 254]: allocate reply buffer  failed", {"close socket", "free #1"}},
        {"malloc", 3, "[Line: 268]: allocate general report buffer  failed", {"close socket", "free #1", "free #2"}},
        {"malloc",
         4,
         "[Line: 287]: allocate sitesurvey buffer  failed",
         {"close socket", "free #1", "free #2", "free #3"}},
    };
    for (const auto& row : rows) {
        SetUp();
        fake::failCall(row.function, row.nth, EPERM);
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 255) << row.trace;
        const bool lacksMemory = row.function == std::string("malloc");
        const char* const reason = lacksMemory ? "Cannot allocate memory" : "Operation not permitted";
        EXPECT_EQ(run.standardError,
                  std::string("[QVP][qvp][main]") + row.trace + "\nqvp(eth0) cannot start: " + reason + "\n");
        fake::Events releases = row.releases;
        releases.push_back("unlink /var/run/qvp-eth0.pid");
        EXPECT_THAT(fake::eventsOf({"close", "free", "unlink"}), testing::ElementsAreArray(releases)) << row.trace;
        EXPECT_THAT(fake::eventsOf({"sendto", "setitimer", "wait"}), IsEmpty()) << row.trace;
        EXPECT_FALSE(std::filesystem::exists(pidFile("eth0"))) << row.trace;
    }
}

TEST_F(Start, ClearsUpAfterAFamilyThatFails) {
    substitutes().primaryInitFails = true;
    EXPECT_THAT(runDaemon().standardError,
                testing::StartsWith("[QVP][qvp][main][Line: 195]: qvp_function_init failed\nqvp(eth0) cannot start: "));
    EXPECT_THAT(fake::eventsOf({"close", "unlink", "setsockopt", "net_get_hwaddr"}),
                ElementsAre("close socket", "unlink /var/run/qvp-eth0.pid"));
    SetUp();
    substitutes().landapInitFails = true;
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 255);
    EXPECT_THAT(
        run.standardError,
        testing::StartsWith("[QVP][qvp][main][Line: 203]: landap_function_init failed\nqvp(eth0) cannot start: "));
    EXPECT_THAT(fake::eventsOf({"close", "unlink", "setsockopt", "net_get_hwaddr"}),
                ElementsAre("net_get_hwaddr eth0", "close socket", "unlink /var/run/qvp-eth0.pid"));
}

TEST_F(Start, ServesAnInterfaceWithoutAMacOrAnAddress) {
    EXPECT_EQ(runDaemon({"none0"}).status, 0);
    const std::vector<fake::Sent> sent = fake::sent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_TRUE(sameBytes(Bytes(10), {sent[0].bytes.begin() + 6, sent[0].bytes.begin() + 16}));
}

TEST_F(Start, GoesOnWhenTheFirstReportCannotBeSent) {
    fake::failCall("sendto", 1, ENETUNREACH);
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_THAT(fake::eventsOf({"wait"}), ElementsAre("wait"));
}

std::string fileBehind(int descriptor) {
    struct stat file = {}, null = {};
    if (fstat(descriptor, &file) != 0) return "closed";
    stat("/dev/null", &null);
    return file.st_rdev == null.st_rdev ? "null" : std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino);
}

// What descriptors 0 to 2 are when the daemon waits, and what its socket is.
fake::Events descriptorsOfARun(const std::vector<int>& closed) {
    fake::clearEvents();
    fake::beforeWait([] {
        for (const int descriptor : {0, 1, 2}) fake::record("descriptor " + fileBehind(descriptor));
        fake::record(std::string("descriptor socket ") + (g_nSocket > 2 ? "beyond" : "among them"));
    });
    EXPECT_EQ(runDaemon({"eth0"}, closed).status, 0);
    return fake::eventsOf({"descriptor"});
}

TEST_F(Start, KeepsTheStandardDescriptorsItHas) {
    const fake::Events found = descriptorsOfARun({});
    ASSERT_EQ(found.size(), 4u);
    EXPECT_EQ(found[0], "descriptor " + fileBehind(0));
    EXPECT_EQ(found[1], "descriptor " + fileBehind(1));
    EXPECT_NE(found[2], "descriptor null");
    EXPECT_EQ(found[3], "descriptor socket beyond");
}

TEST_F(Start, PutsNothingOfItsOwnInPlaceOfOneItHasNot) {
    for (const std::vector<int>& closed : {std::vector<int>{0}, {1}, {2}, {0, 2}, {0, 1, 2}}) {
        SCOPED_TRACE(testing::PrintToString(closed));
        const fake::Events found = descriptorsOfARun(closed);
        ASSERT_EQ(found.size(), 4u);
        for (const int descriptor : closed) {
            EXPECT_EQ(found[static_cast<std::size_t>(descriptor)], "descriptor null") << descriptor;
        }
        EXPECT_EQ(found[3], "descriptor socket beyond");
    }
}

std::string dispositionOf(int number) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return "ignored";
    if (action.sa_handler == SIG_DFL) return "default";
    std::string text = "handled";
    if ((action.sa_flags & SA_RESTART) != 0) text += " restart";
    if ((action.sa_flags & SA_NODEFER) != 0) text += " nodefer";
    if ((action.sa_flags & SA_NOCLDWAIT) != 0) text += " nocldwait";
    for (const int other : {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGHUP}) {
        if (sigismember(&action.sa_mask, other) == 1) text += " masks " + std::to_string(other);
    }
    return text;
}

TEST_F(Start, InstallsItsSignalDispositions) {
    const int ignored[] = {SIGHUP, SIGABRT, SIGUSR2, SIGCHLD, SIGTSTP, SIGTTIN, SIGTTOU, SIGPIPE, SIGXFSZ};
    const int handled[] = {SIGINT, SIGQUIT, SIGTERM, SIGUSR1};
    fake::beforeWait([&] {
        for (const int number : ignored) fake::record("ignored? " + dispositionOf(number));
        for (const int number : handled) fake::record("handled? " + dispositionOf(number));
        fake::record("alarm? " + dispositionOf(SIGALRM).substr(0, 7));
    });
    runDaemon();
    EXPECT_THAT(fake::eventsOf({"ignored?"}), testing::AllOf(testing::SizeIs(9), testing::Each("ignored? ignored")));
    EXPECT_THAT(fake::eventsOf({"handled?"}),
                testing::AllOf(testing::SizeIs(4), testing::Each("handled? handled restart nodefer nocldwait")));
    EXPECT_THAT(fake::eventsOf({"alarm?"}), ElementsAre("alarm? handled"));
}

}  // namespace
}  // namespace unit
