#include "common/run_program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>

#include "store_fixture.h"

struct Ran {
    int status;
    std::string output;
};

static Ran runShell(const char* script, int seconds = 30, size_t capacity = 64) {
    std::string output(capacity + 1, 'Z');
    size_t length = 0;
    const char* const arguments[] = {"sh", "-c", script, nullptr};
    const int status = runProgram(arguments, seconds, output.data(), capacity, &length);
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
        {"printf a; printf b >&2; printf c", 0, "ac"},
        {"true", 0, ""},
        {"cat", 0, ""},
        {"printf abc; kill -9 $$", kStatusUnknown, "abc"},
        {"printf %s \"$(printf '%0100d' 0)\"; exit 4", 4,
         "000000000000000000000000000000000000000000000000000000000000000"},
    };
    for (const auto& row : rows) {
        const Ran ran = runShell(row.script);
        EXPECT_EQ(ran.status, row.status) << row.script;
        EXPECT_EQ(ran.output, row.output) << row.script;
    }
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
    EXPECT_EQ(runProgram(arguments, 30, output, sizeof output, &length), kStatusUnknown);
    EXPECT_EQ(length, 0U);
    EXPECT_STREQ(output, "");
}

TEST(RunProgram, KillsAProgramThatTakesTooLong) {
    const Ran ran = runShell("printf abc; exec sleep 1000", 1);
    EXPECT_EQ(ran.status, kStatusUnknown);
    EXPECT_EQ(ran.output, "abc");
}

// As in a daemon: children are not waited for, signals are blocked, a closed pipe does not end it.
TEST(RunProgram, SetsSignalsBackForTheProgram) {
    EXPECT_EQ(inChild([] {
                  sigset_t all;
                  sigfillset(&all);
                  sigprocmask(SIG_SETMASK, &all, nullptr);
                  signal(SIGPIPE, SIG_IGN);
                  signal(SIGCHLD, SIG_IGN);
                  const Ran ran = runShell("sed -n 's/^SigBlk:.//p; s/^SigIgn:.//p' /proc/self/status", 30, 256);
                  const uint64_t blocked = std::stoull(ran.output.substr(0, 16), nullptr, 16);
                  const uint64_t ignored = std::stoull(ran.output.substr(17, 16), nullptr, 16);
                  EXPECT_EQ(blocked, 0U);
                  EXPECT_EQ(ignored & (1U << (SIGPIPE - 1) | 1U << (SIGCHLD - 1)), 0U);
                  EXPECT_EQ(ran.status, kStatusUnknown);
              }),
              0);
}
