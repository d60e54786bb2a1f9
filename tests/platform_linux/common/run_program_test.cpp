#include "common/run_program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "support/child_process.h"
#include "support/file_calls.h"

struct Ran {
    int status;
    std::string output;
};

static Ran runShell(const char* script, int seconds = 30, size_t capacity = 64) {
    std::string output(capacity + 1, 'Z');
    size_t length = 0;
    const char* const arguments[] = {"sh", "-c", script, nullptr};
    const int status = runProgram(arguments, seconds, output.data(), capacity, length);
    EXPECT_EQ(output[capacity], 'Z');
    EXPECT_EQ(output[length], '\0');
    return {status, output.substr(0, length)};
}

TEST(RunProgram, GivesOutputAndStatus) {
    const struct {
        const char* script;
        int status;
        const char* output;
    } rows[] = {
        {"printf abc", 0, "abc"},
        {"printf abc; exit 3", 3, "abc"},
        {"exit 126", 126, ""},
        {"exit 127", kStatusUnknown, ""},  // as of a program that cannot be started
        {"exit 128", 128, ""},
        {"printf a; printf b >&2; printf c", 0, "ac"},
        {"true", 0, ""},
        {"cat", 0, ""},
        {"printf abc; kill -9 $$", kStatusUnknown, "abc"},
        {"printf %s \"$(printf '%0100d' 0)\"; exit 4", 4,
         "000000000000000000000000000000000000000000000000000000000000000"},
    };
    for (const auto& row : rows) {
        errno = EINTR;  // of something before
        const Ran ran = runShell(row.script);
        EXPECT_EQ(ran.status, row.status) << row.script;
        EXPECT_EQ(ran.output, row.output) << row.script;
    }
}

TEST(RunProgram, LeavesNothingOpenWhereThereIsNoSecondPipe) {
    const int status = inChild([] {
        const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(next);
        const rlimit limit = {static_cast<rlim_t>(next) + 2, static_cast<rlim_t>(next) + 2};
        setrlimit(RLIMIT_NOFILE, &limit);
        if (runShell("printf abc").status != kStatusUnknown) _exit(1);
        for (int number = next; number < next + 2; number++) {
            if (open("/dev/null", O_RDONLY | O_CLOEXEC) != number) _exit(2);
        }
    });
    EXPECT_EQ(status, 0);
}

// The program has ended before its output is looked at.
TEST(RunProgram, GivesWhatWasPrintedLast) {
    CaughtFileCalls caught({.before = [](const std::string& name) {
        siginfo_t runner;
        if (name == "poll") waitid(P_ALL, 0, &runner, WEXITED | WNOWAIT);
    }});
    const Ran ran = runShell("printf abc; exit 3");
    EXPECT_EQ(ran.status, 3);
    EXPECT_EQ(ran.output, "abc");
}

TEST(RunProgram, DoesNotHoldUpAProgramThatPrintsTooMuch) {
    const Ran ran = runShell("head -c 300000 /dev/zero && exit 5", 30, 1000);
    EXPECT_EQ(ran.status, 5);
    EXPECT_EQ(ran.output, std::string(999, '\0'));
}

TEST(RunProgram, KnowsNoStatusOfAProgramThatIsNotThere) {
    char output[8] = "before";
    size_t length = 1;
    const char* const arguments[] = {"no-such-program-here", nullptr};
    EXPECT_EQ(runProgram(arguments, 30, output, sizeof output, length), kStatusUnknown);
    EXPECT_EQ(length, 0U);
    EXPECT_STREQ(output, "");
}

// Where the read end of a pipe tells whether any process still has the write end.
class Witness {
public:
    Witness() { EXPECT_EQ(pipe(ends_), 0); }
    ~Witness() { close(ends_[0]); }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    // For as long as the program and its children have the descriptor that the test gave up.
    bool waitUntilGone() {
        close(ends_[1]);
        pollfd gone = {ends_[0], POLLIN, 0};
        return poll(&gone, 1, 30'000) == 1 && (gone.revents & POLLHUP) != 0;
    }

private:
    int ends_[2] = {-1, -1};
};

TEST(RunProgram, KillsAProgramThatTakesTooLong) {
    for (const char* script : {"printf abc; exec sleep 1000", "printf abc; sleep 1000 & sleep 1000",
                               "printf abc; exec >&-; exec sleep 1000"}) {
        Witness witness;
        const Ran ran = runShell(script, 2);
        EXPECT_EQ(ran.status, kStatusUnknown) << script;
        EXPECT_EQ(ran.output, "abc") << script;
        EXPECT_TRUE(witness.waitUntilGone()) << script;
    }
}

TEST(RunProgram, WaitsForAProgramThatClosesItsOutputInTime) {
    const Ran ran = runShell("printf abc; exec >&-; sleep 0.2; exit 6");
    EXPECT_EQ(ran.status, 6);
    EXPECT_EQ(ran.output, "abc");
}

// What is still there holds the output open, and prints without end.
TEST(RunProgram, DoesNotWaitForWhatAProgramLeavesRunning) {
    const Ran ran = runShell("echo abc; while echo more; do :; done & exit 3", 1000, 32);
    EXPECT_EQ(ran.status, 3);
    EXPECT_EQ(ran.output.substr(0, 4), "abc\n");
}

// Blocked and ignored signals as the program finds them, "0" each where there are none. A shell would unblock them.
static std::string signalsOfProgram() {
    char output[256];
    size_t length = 0;
    const char* const arguments[] = {"sed", "-n", "s/^Sig\\(Blk\\|Ign\\):\t0*\\(.\\)/\\2/p", "/proc/self/status",
                                     nullptr};
    EXPECT_EQ(runProgram(arguments, 30, output, sizeof output, length), 0);
    return output;
}

// As in a daemon: children are not waited for, signals are blocked, those of a terminal and of a closed pipe ignored.
TEST(RunProgram, SetsSignalsBackForTheProgram) {
    EXPECT_EQ(inChild([] {
                  sigset_t all, after;
                  sigfillset(&all);
                  sigprocmask(SIG_SETMASK, &all, nullptr);
                  for (int number = 1; number < NSIG; number++) signal(number, SIG_IGN);
                  EXPECT_EQ(signalsOfProgram(), "0\n0\n");
                  sigprocmask(SIG_SETMASK, nullptr, &after);
                  for (const int number : {SIGHUP, SIGTERM, SIGCHLD, SIGPIPE, SIGTSTP}) {
                      EXPECT_EQ(sigismember(&after, number), 1) << number;
                      EXPECT_EQ(signal(number, SIG_IGN), SIG_IGN) << number;
                  }
              }),
              0);
}

TEST(RunProgram, KnowsTheStatusWhereTheCallerIgnoresItsChildren) {
    EXPECT_EQ(inChild([] {
                  struct sigaction action = {};
                  action.sa_handler = SIG_IGN;
                  action.sa_flags = SA_NOCLDWAIT;
                  sigaction(SIGCHLD, &action, nullptr);
                  EXPECT_EQ(runShell("exit 0").status, 0);
                  EXPECT_EQ(runShell("exit 3").status, 3);
                  EXPECT_EQ(runShell("kill -9 $$").status, kStatusUnknown);
                  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a process is left";
              }),
              0);
}

// A caller without standard descriptors: its pipes stand in their place.
TEST(RunProgram, NeedsNoStandardDescriptors) {
    EXPECT_EQ(inChild([] {
                  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO}) close(descriptor);
                  const Ran ran = runShell("cat; printf abc; exit 3");
                  EXPECT_EQ(ran.status, 3);
                  EXPECT_EQ(ran.output, "abc");
              }),
              0);
}

// The runner lives as long as the program, the caller's port must not. The program ends the caller and then waits for
// the test.
TEST(RunProgram, KeepsNoDescriptorOfTheCallerWhileTheProgramRuns) {
    int port[2], go[2];
    ASSERT_EQ(pipe2(port, O_CLOEXEC), 0);
    ASSERT_EQ(pipe(go), 0);
    const pid_t caller = fork();
    if (caller == 0) {
        close(go[1]);
        const std::string end = "kill -9 $(awk '/^PPid/ {print $2}' /proc/$PPID/status); cat <&";
        runShell((end + std::to_string(go[0])).c_str());
        _exit(0);
    }
    close(port[1]);
    int status = 0;
    EXPECT_EQ(waitpid(caller, &status, 0), caller);
    EXPECT_TRUE(WIFSIGNALED(status));
    pollfd free = {port[0], POLLIN, 0};
    EXPECT_EQ(poll(&free, 1, 10'000), 1);
    for (const int descriptor : {port[0], go[0], go[1]}) close(descriptor);
}

// A program that is started finds every signal as it is at a start, whatever the daemon ignores.
TEST(RunProgram, StartsWithEverySignalAsItIsAtAStart) {
    char text[8192];
    size_t length = 0;
    const char* const arguments[] = {"cat", "/proc/self/status", nullptr};
    auto* const before = signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(runProgram(arguments, 30, text, sizeof text, length), 0);
    signal(SIGCHLD, before);
    EXPECT_NE(std::string(text).find("SigIgn:\t0000000000000000\n"), std::string::npos) << text;
    EXPECT_NE(std::string(text).find("SigBlk:\t0000000000000000\n"), std::string::npos) << text;
}
