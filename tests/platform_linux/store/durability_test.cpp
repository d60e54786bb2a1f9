// The store's file through power cuts and failures.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "store/store_fixture.h"
#include "support/child_process.h"
#include "support/file_calls.h"

namespace fs = std::filesystem;

static const std::string kNext = "# factory\n[INFO]\nProduct=next\n\n[DDNS]\nUID=user\n";

static struct stat fileStatus(const fs::path& path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status;
}

static bool isOldOrNew(const std::string& bytes) { return bytes == kOld || bytes == kNew; }

class StoreSteps : public StoreTest, public testing::WithParamInterface<size_t> {};

// The writer ends at each of its system calls in turn, as in a power cut; the next writer must not notice.
TEST_P(StoreSteps, LeaveTheOldStoreOrTheNewOneWhenTheWriterEnds) {
    int olds = 0, news = 0;
    for (int step = 1;; step++) {
        put(kOld);
        const int status = inChild([&] {
            CaughtFileCalls caught({.endAt = step, .mostBytes = GetParam()});
            _exit(writeText("INFO", "Product", "new") == 0 ? 0 : 2);
        });
        const std::string left = bytes();
        ASSERT_TRUE(isOldOrNew(left)) << "step " << step << ": " << left;
        ++(left == kOld ? olds : news);
        ASSERT_EQ(writeText("INFO", "Product", "next"), 0) << "step " << step;
        ASSERT_EQ(bytes(), kNext) << "step " << step;
        ASSERT_EQ(folder.names(), std::vector<std::string>{"camera.ini"}) << "step " << step;
        if (status == 0) break;
        ASSERT_EQ(status, kEndedAtCall) << "step " << step;
    }
    EXPECT_GE(olds, 9);  // look for the link, open, lock, read, make, write, sync, check, rename
    EXPECT_GE(news, 2);  // sync the folder, close
}

// Each system call fails in turn, in each way that a disk, a file system or the kernel has.
class StoreErrors : public StoreTest, public testing::WithParamInterface<std::tuple<size_t, int>> {};

TEST_P(StoreErrors, LeaveTheOldStoreOrTheNewOne) {
    const auto [mostBytes, error] = GetParam();
    int failures = 0;
    bool reached = true;
    for (int step = 1; reached; step++) {
        put(kOld);
        int result;
        {
            CaughtFileCalls caught({.failAt = step, .error = error, .mostBytes = mostBytes});
            result = writeText("INFO", "Product", "new");
            reached = caught.made() >= step;
        }
        ASSERT_TRUE(isOldOrNew(bytes())) << "step " << step << ": " << bytes();
        if (result == 0) {
            ASSERT_EQ(bytes(), kNew) << "step " << step;
        }
        failures += result != 0;
        ASSERT_EQ(folder.names(), std::vector<std::string>{"camera.ini"}) << "step " << step;
    }
    EXPECT_GE(failures, 10);  // all but the closes and the removal of a temporary file that is not there
}

// Whole writes, and pieces of 7 bytes.
INSTANTIATE_TEST_SUITE_P(Pieces, StoreSteps, testing::Values(0, 7));
INSTANTIATE_TEST_SUITE_P(EveryError, StoreErrors,
                         testing::Combine(testing::Values(0, 7), testing::ValuesIn(kPlausibleErrors)));

TEST_F(StoreTest, IsWholeAfterInterruptedCalls) {
    bool reached = true;
    for (int step = 1; reached; step++) {
        put(kOld);
        CaughtFileCalls caught({.interruptAt = step, .mostBytes = 5});
        ASSERT_EQ(writeText("INFO", "Product", "new"), 0) << "step " << step;
        reached = caught.made() >= step;
        ASSERT_EQ(bytes(), kNew) << "step " << step;
    }
}

// What the write does in order: the new bytes are safe before they take the old ones' place, and then the folder is.
TEST_F(StoreTest, IsSyncedBeforeAndAfterTheRename) {
    put(kOld);
    std::vector<std::string> order;
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) {
            if (name == "write" || name == "fsync" || name == "renameat") order.push_back(name);
        }});
        ASSERT_EQ(writeText("INFO", "Product", "new"), 0);
    }
    EXPECT_EQ(order, (std::vector<std::string>{"write", "fsync", "renameat", "fsync"}));
}

// The calls that a write makes, those of a name counted from 1; some have the 64 of large files in it.
static int numberOfCall(const std::string& wanted, int occurrence) {
    int calls = 0, seen = 0, found = 0;
    CaughtFileCalls caught({.before = [&](const std::string& name) {
        ++calls;
        const bool isWanted = name == wanted || name == wanted + "64";
        if (isWanted && ++seen == occurrence) found = calls;
    }});
    EXPECT_EQ(writeText("INFO", "Product", "new"), 0);
    EXPECT_NE(found, 0) << wanted;
    return found;
}

// A folder's failed fsync comes too late to leave the old store, but must not pass for success; where a file system
// does not know fsync of a folder, there is none to make.
TEST_F(StoreTest, IsNotCalledPermanentBeforeItsFolderIs) {
    put(kOld);
    const int folderSync = numberOfCall("fsync", 2);
    for (const int error : {EIO, EINVAL}) {
        put(kOld);
        CaughtFileCalls caught({.failAt = folderSync, .error = error});
        EXPECT_EQ(writeText("INFO", "Product", "new"), error == EIO ? -1 : 0);
        EXPECT_EQ(bytes(), kNew);
    }
}

// The same value again: the bytes are there, but a sync of the file or of the folder fails.
TEST_F(StoreTest, IsNotCalledPermanentWhenItHasTheBytesOnly) {
    put(kNew);
    const std::pair<const char*, int> calls[] = {
        {"fsync", 1},
        {"fsync", 2},
        {"openat", 2},
    };
    for (const auto& [name, occurrence] : calls) {
        const int failing = numberOfCall(name, occurrence);
        CaughtFileCalls caught({.failAt = failing, .error = EIO});
        EXPECT_EQ(writeText("INFO", "Product", "new"), -1) << name << occurrence;
        EXPECT_EQ(bytes(), kNew);
    }
}

TEST_F(StoreTest, IsNotMadeOfWhatAPowerCutLeft) {
    put(kOld);
    const int removal = numberOfCall("unlinkat", 1);
    put(kOld);
    writeFile(folder / "camera.ini.new", "garbage");
    CaughtFileCalls caught({.failAt = removal, .error = EIO});
    EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
    EXPECT_EQ(bytes(), kOld);
}

TEST_F(StoreTest, IsNotWrittenWhenNothingChanges) {
    put(kOld);
    const ino_t before = fileStatus(path()).st_ino;
    const fs::file_time_type written = fs::last_write_time(path());
    std::vector<std::string> calls;
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) {
            if (name == "write" || name == "fsync" || name == "renameat") calls.push_back(name);
        }});
        EXPECT_EQ(writeText("INFO", "Product", "old"), 0);
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"fsync", "fsync"}));
    EXPECT_EQ(fileStatus(path()).st_ino, before);
    EXPECT_EQ(fs::last_write_time(path()), written);
}

TEST_F(StoreTest, IsReplacedBehindItsLinks) {
    fs::create_directories(folder / "data/flash");
    const fs::path target = folder / "data/flash/store";
    const fs::path direct = folder / "data/direct.ini";
    fs::create_symlink("flash/store", direct);
    fs::create_symlink(direct, path());
    for (const bool exists : {false, true}) {
        if (exists) writeFile(target, kOld);
        ASSERT_EQ(writeText("INFO", "Product", "new"), 0);
        EXPECT_TRUE(fs::is_symlink(path()));
        EXPECT_TRUE(fs::is_symlink(direct));
        EXPECT_FALSE(fs::is_symlink(target));
        EXPECT_EQ(readFile(target), exists ? kNew : "[INFO]\nProduct=new\n");
        EXPECT_EQ(storedText("INFO", "Product"), "new");
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"camera.ini", "data"}));
}

TEST_F(StoreTest, RefusesAnEndlessLink) {
    fs::create_symlink("camera.ini", path());
    EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
    EXPECT_EQ(storedText("INFO", "Product"), std::nullopt);
    EXPECT_TRUE(fs::is_symlink(path()));
}

TEST_F(StoreTest, KeepsItsModeAndOwner) {
    ASSERT_EQ(writeText("INFO", "Product", "a"), 0);
    EXPECT_EQ(fileStatus(path()).st_mode & 07777, 0600U);
    ASSERT_EQ(chmod(path().c_str(), 0640), 0);
    const bool superuser = geteuid() == 0;
    if (superuser) {
        ASSERT_EQ(chown(path().c_str(), 12, 34), 0);
    }
    ASSERT_EQ(writeText("INFO", "Product", "b"), 0);
    EXPECT_EQ(fileStatus(path()).st_mode & 07777, 0640U);
    if (superuser) {
        EXPECT_EQ(fileStatus(path()).st_uid, 12U);
        EXPECT_EQ(fileStatus(path()).st_gid, 34U);
    }
}

// A store of somebody else's; its new file is then the writer's.
TEST_F(StoreTest, IsWrittenWhereItCannotBeGivenAway) {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can make such a file";
    int given = 0;
    for (const char* missing : {"fchown", ""}) {
        put(kOld);
        ASSERT_EQ(chown(path().c_str(), 12, 34), 0);
        CaughtFileCalls caught(
            {.missing = missing, .before = [&](const std::string& name) { given += name == "fchown"; }});
        EXPECT_EQ(writeText("INFO", "Product", "new"), 0);
        EXPECT_EQ(bytes(), kNew);
        EXPECT_EQ(fileStatus(path()).st_uid, *missing == '\0' ? 12U : 0U);
    }
    EXPECT_EQ(given, 1);
}

TEST_F(StoreTest, IsNotLedAstrayByWhatStandsInTheTemporaryFilesPlace) {
    put(kOld);
    writeFile(folder / "victim", "mine");
    fs::create_symlink("victim", folder / "camera.ini.new");
    EXPECT_EQ(writeText("INFO", "Product", "new"), 0);
    EXPECT_EQ(readFile(folder / "victim"), "mine");
    EXPECT_FALSE(fs::is_symlink(path()));
    EXPECT_EQ(bytes(), kNew);

    fs::create_directory(folder / "camera.ini.new");
    EXPECT_EQ(writeText("INFO", "Product", "newer"), -1);
    EXPECT_EQ(bytes(), kNew);
}

TEST_F(StoreTest, HasABoundOfSize) {
    const std::string rest(64 * 1024 - kOld.size() - 2, 'x');
    put(kOld + "#" + rest + "\n");
    EXPECT_EQ(storedText("INFO", "Product"), "old");
    EXPECT_EQ(writeText("INFO", "Product", "new"), 0);
    EXPECT_EQ(bytes(), kNew + "#" + rest + "\n");
    EXPECT_EQ(writeText("INFO", "Product", "more"), -1);
    EXPECT_EQ(bytes(), kNew + "#" + rest + "\n");
    put(kOld + "##" + rest + "\n");
    EXPECT_EQ(storedText("INFO", "Product"), std::nullopt);
    EXPECT_EQ(writeText("INFO", "Product", ""), -1);
    EXPECT_EQ(bytes(), kOld + "##" + rest + "\n");
}

TEST_F(StoreTest, SaysWhatWentWrong) {
    setenv("QVP_STORE", (folder.path() + "/none/camera.ini").c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "qvp platform: cannot write INFO/Product to " + folder.path() +
                                                          "/none/camera.ini: No such file or directory\n");
}

TEST_F(StoreTest, FailsWhenItsPathIsTooLong) {
    for (const size_t length : {252, 5000}) {  // ".new" behind the first is too much
        setenv("QVP_STORE", (folder.path() + "/" + std::string(length, 'x')).c_str(), 1);
        errno = 0;
        EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
        EXPECT_EQ(errno, ENAMETOOLONG);
        EXPECT_EQ(storedText("INFO", "Product"), std::nullopt);
    }
}

// A full disk, made by a limit on the size of files.
TEST_F(StoreTest, StaysOldOnAFullDisk) {
    put(kOld);
    const int status = inChild([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {20, 20};
        setrlimit(RLIMIT_FSIZE, &limit);
        _exit(writeText("INFO", "Product", "new") == -1 ? 0 : 1);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(bytes(), kOld);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"camera.ini"});
}

TEST_F(StoreTest, LeaksNoDescriptor) {
    put(kOld);
    const auto next = [] {
        const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(descriptor);
        return descriptor;
    };
    const int before = next();
    bool reached = true;
    for (int step = 1; reached; step++) {
        CaughtFileCalls caught({.failAt = step, .error = EIO});
        writeText("INFO", "Product", step % 2 == 0 ? "even" : "odd");
        storedText("INFO", "Product");
        reached = caught.made() >= step;
    }
    EXPECT_EQ(next(), before);
}
