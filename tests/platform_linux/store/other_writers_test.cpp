// The store's file while others write it too.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "store/store_fixture.h"
#include "support/file_calls.h"

namespace fs = std::filesystem;

// Somebody who knows no lock edits the store while it is being written.
TEST_F(StoreTest, KeepsAnEditMadeBetweenReadAndRename) {
    for (const bool replaced : {false, true}) {
        for (const char* const moment : {"write", "fsync"}) {
            put(kOld);
            bool edited = false;
            {
                CaughtFileCalls caught({.before = [&](const std::string& name) {
                    if (edited || name != moment) return;
                    edited = true;
                    if (replaced) fs::remove(path());
                    put(kOld + "PWD=theirs\n");
                }});
                ASSERT_EQ(writeText("INFO", "Product", "new"), 0);
            }
            EXPECT_TRUE(edited);
            EXPECT_EQ(bytes(), kNew + "PWD=theirs\n");
        }
    }
}

TEST_F(StoreTest, KeepsAStoreThatAppearsWhileTheFirstOneIsWritten) {
    bool edited = false;
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) {
            if (edited || name != "fsync") return;
            edited = true;
            put(kOld);
        }});
        ASSERT_EQ(writeText("INFO", "Product", "new"), 0);
    }
    EXPECT_EQ(bytes(), kNew);
}

TEST_F(StoreTest, GivesWayToAnEditorThatNeverRests) {
    put(kOld);
    int edits = 0;
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) {
            if (name == "fsync") put(kOld + "#" + std::string(static_cast<size_t>(++edits), 'x'));
        }});
        EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
    }
    EXPECT_GT(edits, 1);
    EXPECT_EQ(bytes(), kOld + "#" + std::string(static_cast<size_t>(edits), 'x'));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"camera.ini"});
}

TEST_F(StoreTest, LosesNoWriteOfSeveralProcesses) {
    const char* const keys[] = {"IP", "SubnetMask", "Gateway", "DNS0"};
    constexpr int kWrites = 20;
    // Who waits for the lock asks again every 10 ms, and would find it taken again by a writer without a rest: for
    // longer than it waits where the disk is slow.
    constexpr useconds_t kRest = 15'000;
    put("[NETWORK_V4]\n");
    std::vector<pid_t> writers;
    for (const char* key : keys) {
        writers.push_back(fork());
        if (writers.back() != 0) continue;
        bool good = true;
        for (int number = 1; number <= kWrites && good; number++) {
            const std::string value = std::string(static_cast<size_t>(number), key[0]);
            good = writeText("NETWORK_V4", key, value) == 0 && storedText("NETWORK_V4", key) == value;
            usleep(kRest);
        }
        _exit(good ? 0 : 1);
    }
    for (const pid_t writer : writers) {
        int status = -1;
        EXPECT_EQ(waitpid(writer, &status, 0), writer);
        EXPECT_EQ(status, 0);
    }
    for (const char* key : keys) EXPECT_EQ(storedText("NETWORK_V4", key), std::string(kWrites, key[0]));
    const std::string file = bytes();
    EXPECT_EQ(std::count(file.begin(), file.end(), '\n'), 5);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"camera.ini"});
}

TEST_F(StoreTest, WaitsForAnotherWriterOnlySoLong) {
    put(kOld);
    const int other = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
    EXPECT_EQ(bytes(), kOld);
    requestBegins();
    int tries = 0;
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) {
            if (name == "flock" && ++tries == 3) flock(other, LOCK_UN);
        }});
        EXPECT_EQ(writeText("INFO", "Product", "new"), 0);
    }
    EXPECT_EQ(tries, 3);
    EXPECT_EQ(bytes(), kNew);
    close(other);
}

TEST_F(StoreTest, WaitsOnceARequestForAnotherWriter) {
    put(kOld);
    const int other = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    requestBegins();
    testing::internal::CaptureStderr();
    EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
    int tries = 0;
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) { tries += name == "flock" ? 1 : 0; }});
        EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
        EXPECT_EQ(writeText("CAMSYSTEM", "CameraName", "Yard"), -1);
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_NE(said.find("another program keeps it busy"), std::string::npos);
    EXPECT_EQ(tries, 0);
    EXPECT_EQ(bytes(), kOld);
    close(other);
    requestBegins();
    EXPECT_EQ(writeText("INFO", "Product", "new"), 0);
    EXPECT_EQ(bytes(), kNew);
}
