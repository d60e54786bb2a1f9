// The files of an installed zone through failures, power cuts and other writers.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "support/file_calls.h"
#include "support/temporary_folder.h"
#include "time_zone/time_zone.h"
#include "time_zone/tokyo_file.h"

namespace fs = std::filesystem;

static const std::vector<std::string> kBothNames = {"TZ", "localtime"};
static const std::string kParisText = "CET-1CEST,M3.5.0,M10.5.0/3\n";
static const std::string kTokyoText = "JST-9\n";

static int installParis(const TemporaryFolder& folder) {
    return installTimeZone(folder.path().c_str(), 600, 1, nullptr);
}
static int installTokyo(const TemporaryFolder& folder) {
    return installTimeZone(folder.path().c_str(), 1220, 1, nullptr);
}

static std::string parisFile() {
    TemporaryFolder folder;
    EXPECT_EQ(installParis(folder), 0);
    return readFile(folder / "localtime");
}

static int statusOf(pid_t child) {
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

static int endAtCall(const TemporaryFolder& folder, int step) {
    const pid_t child = fork();
    if (child != 0) return statusOf(child);
    CaughtFileCalls caught({.endAt = step});
    _exit(installParis(folder) == 0 ? 0 : 2);
}

// The writer ends at each of its system calls in turn, as in a power cut; the next one must not notice.
TEST(ZoneFiles, AreWholeWhereverTheWriterEnds) {
    const std::string paris = parisFile();
    int old = 0, mixed = 0, changed = 0;
    for (int step = 1, status = kEndedAtCall; status == kEndedAtCall; step++) {
        TemporaryFolder folder;
        ASSERT_EQ(installTokyo(folder), 0);
        status = endAtCall(folder, step);
        const std::string file = readFile(folder / "localtime"), text = readFile(folder / "TZ");
        ASSERT_TRUE(file == kTokyoFile || file == paris) << step;
        ASSERT_TRUE(text == kTokyoText || text == kParisText) << step;
        ++(file == paris ? changed : text == kParisText ? mixed : old);

        ASSERT_EQ(installTokyo(folder), 0) << step;
        ASSERT_EQ(readFile(folder / "localtime"), kTokyoFile) << step;
        ASSERT_EQ(readFile(folder / "TZ"), kTokyoText) << step;
        ASSERT_EQ(folder.names(), kBothNames) << step;
        ASSERT_TRUE(status == kEndedAtCall || status == 0) << step;
    }
    EXPECT_GE(old, 10);  // open, lock, and for either file: make, write, mode, sync, close
    EXPECT_EQ(mixed, 1);
    EXPECT_GE(changed, 2);
}

static int installParisFailingAt(const TemporaryFolder& folder, int step, int error, int* calls) {
    CaughtFileCalls caught({.failAt = step, .error = error, .before = [calls](const std::string&) { ++*calls; }});
    return installParis(folder);
}

class ZoneErrors : public testing::TestWithParam<int> {};

// Each system call fails in turn: either nothing has changed, or everything has.
TEST_P(ZoneErrors, LeaveTheFilesAsTheyWere) {
    const std::string paris = parisFile();
    int calls = 0, failures = 0, ignored = 0;
    ASSERT_EQ(installParisFailingAt(TemporaryFolder(), 0, 0, &calls), 0);
    for (int step = 1; step <= calls; step++) {
        TemporaryFolder folder;
        ASSERT_EQ(installTokyo(folder), 0);
        testing::internal::CaptureStderr();
        const int result = installParisFailingAt(folder, step, GetParam(), &ignored);
        const bool silent = testing::internal::GetCapturedStderr().empty();
        ASSERT_FALSE(silent && result != 0) << step;
        failures += result != 0;
        ASSERT_EQ(readFile(folder / "localtime"), result == 0 ? paris : kTokyoFile) << step;
        ASSERT_EQ(readFile(folder / "TZ"), result == 0 ? kParisText : kTokyoText) << step;
        ASSERT_EQ(installTokyo(folder), 0) << step;
        ASSERT_EQ(folder.names(), kBothNames) << step;
    }
    EXPECT_GE(failures, 14);  // open, lock, for either file make, write, mode, sync, close, and rename
}

INSTANTIATE_TEST_SUITE_P(EveryError, ZoneErrors, testing::ValuesIn(kPlausibleErrors));

TEST(ZoneFiles, NeedNoHardLinks) {
    TemporaryFolder folder;
    ASSERT_EQ(installTokyo(folder), 0);
    {
        CaughtFileCalls caught({.missing = "linkat"});
        EXPECT_EQ(installParis(folder), 0);
    }
    EXPECT_EQ(readFile(folder / "TZ"), kParisText);
    EXPECT_EQ(folder.names(), kBothNames);
}

TEST(ZoneFiles, AreReplacedWhereNoFileCanBeGivenAway) {
    TemporaryFolder folder;
    ASSERT_EQ(installTokyo(folder), 0);
    int given = 0;
    {
        CaughtFileCalls caught({.missing = "fchownat"});
        EXPECT_EQ(installParis(folder), 0);
    }
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) { given += name == "fchownat"; }});
        EXPECT_EQ(installParis(folder), 0);
    }
    EXPECT_EQ(given, 1);
    EXPECT_EQ(readFile(folder / "TZ"), kParisText);
    EXPECT_EQ(folder.names(), kBothNames);
}

TEST(ZoneFiles, AreWrittenInPieces) {
    TemporaryFolder folder;
    CaughtFileCalls caught({.mostBytes = 7});
    EXPECT_EQ(installTokyo(folder), 0);
    EXPECT_EQ(readFile(folder / "localtime"), kTokyoFile);
    EXPECT_EQ(readFile(folder / "TZ"), kTokyoText);
}

TEST(ZoneFiles, AreAsTheyWereWhenTheFileCannotBeReplaced) {
    for (const char* text : {"before", ""}) {
        TemporaryFolder folder;
        fs::create_directories(folder / "localtime" / "in the way");
        if (*text != '\0') writeFile(folder / "TZ", text);
        const auto names = folder.names();

        testing::internal::CaptureStderr();
        EXPECT_EQ(installParis(folder), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "qvp platform: time zone: localtime: Is a directory\n");
        EXPECT_EQ(folder.names(), names);
        EXPECT_EQ(readFile(folder / "TZ"), text);
    }
}

TEST(ZoneFiles, GoBackToTheOldTextWithItsModeAndOwner) {
    TemporaryFolder folder;
    fs::create_directories(folder / "localtime" / "in the way");
    writeFile(folder / "TZ", "before");
    ASSERT_EQ(chmod((folder / "TZ").c_str(), 0640), 0);
    const bool superuser = geteuid() == 0;
    if (superuser) {
        ASSERT_EQ(chown((folder / "TZ").c_str(), 12, 34), 0);
    }
    EXPECT_EQ(installParis(folder), -1);
    struct stat status = {};
    ASSERT_EQ(stat((folder / "TZ").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
    if (superuser) {
        EXPECT_EQ(status.st_uid, 12U);
        EXPECT_EQ(status.st_gid, 34U);
    }
}

TEST(ZoneFiles, GoBackToALinkInTheTextsPlace) {
    TemporaryFolder folder;
    fs::create_directories(folder / "localtime" / "in the way");
    fs::create_symlink("elsewhere/TZ", folder / "TZ");
    EXPECT_EQ(installParis(folder), -1);
    EXPECT_EQ(fs::read_symlink(folder / "TZ"), "elsewhere/TZ");
    EXPECT_EQ(folder.names(), kBothNames);
    fs::remove_all(folder / "localtime");
    EXPECT_EQ(installParis(folder), 0);
    EXPECT_FALSE(fs::is_symlink(folder / "TZ"));
    EXPECT_EQ(folder.names(), kBothNames);
}

// What cannot be kept is not replaced.
TEST(ZoneFiles, AreAsTheyWereWhenTheTextIsNone) {
    for (const size_t size : {4096, 4097}) {
        TemporaryFolder folder;
        const std::string text(size, 'x');
        writeFile(folder / "localtime", "before");
        writeFile(folder / "TZ", text);
        EXPECT_EQ(installParis(folder), size == 4096 ? 0 : -1);
        EXPECT_EQ(readFile(folder / "TZ"), size == 4096 ? kParisText : text);
        EXPECT_EQ(readFile(folder / "localtime") == "before", size != 4096);
        EXPECT_EQ(folder.names(), kBothNames);
    }
}

TEST(ZoneFiles, AreAsTheyWereWhenTheTextCannotBeReplaced) {
    TemporaryFolder folder;
    writeFile(folder / "localtime", "before");
    fs::create_directories(folder / "TZ" / "in the way");
    testing::internal::CaptureStderr();
    EXPECT_EQ(installParis(folder), -1);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(folder.names(), kBothNames);
    EXPECT_EQ(readFile(folder / "localtime"), "before");
}

TEST(ZoneFiles, NeedAFolder) {
    TemporaryFolder folder;
    const std::string missing = folder / "missing";
    testing::internal::CaptureStderr();
    EXPECT_EQ(installTimeZone(missing.c_str(), 600, 1, nullptr), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "qvp platform: time zone: " + missing + ": No such file or directory\n");
}

// A disk that fills up after `limit` bytes of a file.
static int installOnFullDisk(const TemporaryFolder& folder, rlim_t limit) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit size = {limit, limit};
        signal(SIGXFSZ, SIG_IGN);
        if (setrlimit(RLIMIT_FSIZE, &size) != 0) _exit(99);
        close(STDERR_FILENO);
        _exit(installParis(folder) == -1 ? 1 : 0);
    }
    return statusOf(child);
}

TEST(ZoneFiles, AreAsTheyWereOnAFullDisk) {
    TemporaryFolder folder;
    writeFile(folder / "localtime", "before");
    writeFile(folder / "TZ", "before");
    for (rlim_t limit : {0, 10, 100}) {
        EXPECT_EQ(installOnFullDisk(folder, limit), 1) << limit;
        EXPECT_EQ(readFile(folder / "localtime"), "before");
        EXPECT_EQ(readFile(folder / "TZ"), "before");
        EXPECT_EQ(folder.names(), kBothNames);
    }
    EXPECT_EQ(installOnFullDisk(folder, 4096), 0);
}

// Paris and Tokyo in turn.
static pid_t startInstalling(const TemporaryFolder& folder, int turns) {
    const pid_t child = fork();
    if (child != 0) return child;
    for (int turn = 0; turn < turns; turn++) {
        if ((turn % 2 == 0 ? installParis(folder) : installTokyo(folder)) != 0) _exit(1);
    }
    _exit(0);
}

static void expectWholeFiles(const TemporaryFolder& folder, const std::set<std::string>& files) {
    EXPECT_EQ(files.count(readFile(folder / "localtime")), 1u);
    EXPECT_EQ((std::set<std::string>{kParisText, kTokyoText}).count(readFile(folder / "TZ")), 1u);
}

TEST(ZoneFiles, AreWholeUnderSeveralWriters) {
    const std::set<std::string> files = {parisFile(), kTokyoFile};
    TemporaryFolder folder;
    ASSERT_EQ(installTokyo(folder), 0);
    std::set<pid_t> children;
    for (int child = 0; child < 3; child++) children.insert(startInstalling(folder, 20));
    while (!children.empty()) {
        expectWholeFiles(folder, files);
        int status = 0;
        const pid_t ended = waitpid(-1, &status, WNOHANG);
        if (ended <= 0) continue;
        EXPECT_EQ(children.erase(ended), 1u);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(folder.names(), kBothNames);
    EXPECT_EQ(readFile(folder / "localtime") == kTokyoFile, readFile(folder / "TZ") == kTokyoText);
}
