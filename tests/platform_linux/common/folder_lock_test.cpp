// Locks that other programs hold: one wait for all of a request's.
#include "common/folder_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "common/kept_file.h"
#include "store/store_fixture.h"
#include "support/file_calls.h"
#include "time_zone/time_zone.h"

// A folder of which another program has the lock.
class BusyFolder {
public:
    BusyFolder() { EXPECT_EQ(flock(other_, LOCK_EX), 0); }
    ~BusyFolder() {
        close(other_);
        close(own_);
    }
    BusyFolder(const BusyFolder&) = delete;
    BusyFolder& operator=(const BusyFolder&) = delete;

    std::string path() const { return folder_.path(); }
    void release() const { flock(other_, LOCK_UN); }

    // How often the lock was asked for until it was ours, or the wait was over; the other program gives it back before
    // that time, which is 0 for never.
    int asked(int releasedAt, int expected) const {
        int times = 0;
        CaughtFileCalls caught({.before =
                                    [&](const std::string& name) {
                                        if (name == "flock" && ++times == releasedAt) release();
                                    },
                                .noPause = true});
        EXPECT_EQ(lockFolder(own_), expected);
        return times;
    }

private:
    int opened() const { return open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }

    TemporaryFolder folder_;
    int other_ = opened(), own_ = opened();
};

class FolderLock : public testing::Test {
protected:
    ~FolderLock() override { requestBegins(); }  // the next test has a wait again
};

TEST_F(FolderLock, IsWaitedForSoLong) {
    requestBegins();
    const BusyFolder folder;
    EXPECT_EQ(folder.asked(0, -1), 501);
    EXPECT_EQ(errno, EWOULDBLOCK);
}

TEST_F(FolderLock, HasOneWaitWithAllOthersOfTheRequest) {
    for (int request = 0; request < 2; request++) {
        requestBegins();
        const BusyFolder folders[4];
        EXPECT_EQ(folders[0].asked(3, 0), 3);
        EXPECT_EQ(folders[1].asked(0, -1), 499);
        EXPECT_EQ(folders[2].asked(0, -1), 1);
        EXPECT_EQ(folders[3].asked(1, 0), 1);
    }
}

TEST_F(FolderLock, HasAWaitOfItsOwnWhereNobodyTellsOfRequests) {
    const uint32_t known = std::exchange(requestNumber, 0);
    const BusyFolder folders[2];
    EXPECT_EQ(folders[0].asked(0, -1), 501);
    EXPECT_EQ(folders[1].asked(0, -1), 501);
    requestNumber = known;
}

class BusyStore : public StoreTest {
protected:
    BusyStore() { EXPECT_EQ(flock(other_, LOCK_EX), 0); }
    ~BusyStore() override {
        close(other_);
        requestBegins();
    }

    // A write that has waited in vain.
    static void writeInVain() {
        CaughtFileCalls caught({.noPause = true});
        EXPECT_EQ(writeText("INFO", "Product", "new"), -1);
    }

private:
    int other_ = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
};

TEST_F(BusyStore, LeavesNoWaitToTheZoneOfTheSameRequest) {
    const BusyFolder zone;
    int times = 0;
    requestBegins();
    writeInVain();
    testing::internal::CaptureStderr();
    {
        CaughtFileCalls caught({.before = [&](const std::string& name) { times += name == "flock"; }});
        EXPECT_EQ(installTimeZone(zone.path().c_str(), 600, 1, nullptr), -1);
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_EQ(times, 1);
    zone.release();
    EXPECT_EQ(installTimeZone(zone.path().c_str(), 600, 1, nullptr), 0);
}

// What the request has read before the wait may be out of date behind it.
TEST_F(BusyStore, IsReadAgainBehindTheWait) {
    put(kOld);
    EXPECT_EQ(storedText("INFO", "Product"), "old");
    writeInVain();
    put(kNew);
    char text[256] = {};
    EXPECT_EQ(cfgRead("INFO", "Product", text), 0);
    EXPECT_STREQ(text, "new");
}
