// Where the list of networks comes from.
#include "wireless/site_list.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>

#include "platform.h"
#include "support/file_calls.h"
#include "support/temporary_folder.h"

using std::string_literals::operator""s;

class SiteList : public testing::Test {
protected:
    SiteList() {
        for (const char* name : {"net", "net/wlan7", "net/wlan7/wireless", "bin"}) {
            std::filesystem::create_directory(folder / name);
        }
        writeFile(folder / "dev", "heading\n  eth0: 1\n wlan7: 1\n");
        setenv("PATH", ((folder / "bin").string() + ":" + path_).c_str(), 1);
    }
    ~SiteList() override {
        setenv("PATH", path_.c_str(), 1);
        unsetenv("QVP_SITE_LIST");
    }

    void makeIw(const std::string& script) const {
        writeFile(folder / "bin/iw", "#!/bin/sh\n" + script);
        ASSERT_EQ(chmod((folder / "bin/iw").c_str(), 0755), 0);
    }

    int scan(char* list, int size) const {
        return scanForNetworks((folder / "dev").c_str(), (folder / "net").c_str(), list, size);
    }

    TemporaryFolder folder;

private:
    std::string path_ = getenv("PATH");
};

TEST_F(SiteList, IsAFileHandedThroughAsItStands) {
    const std::string file = "Ch SSID\n6   \xFF\0 x\r\n"s;
    writeFile(folder / "list", file);
    setenv("QVP_SITE_LIST", (folder / "list").c_str(), 1);
    const int length = static_cast<int>(file.size());
    for (int size = 1; size < length + 4; size++) {
        std::string list(40, 'Z');
        ASSERT_EQ(getSiteList(list.data(), size), 0);
        const size_t kept = static_cast<size_t>(size > length ? length : size - 1);
        EXPECT_EQ(list, file.substr(0, kept) + '\0' + std::string(40 - kept - 1, 'Z'));
    }
}

// Bytes of address space that this process has.
static int64_t spaceTaken() {
    int64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

TEST_F(SiteList, GivesBackTheMemoryThatItTakes) {
    makeIw("echo 'BSS 02:00:5e:00:53:01(on wlan7)'");
    writeFile(folder / "list", "heading\n");
    setenv("QVP_SITE_LIST", (folder / "list").c_str(), 1);
    std::string list(1000, 'Z');
    const int64_t before = spaceTaken();
    ASSERT_GT(before, 0);
    for (int round = 0; round < 64; round++) {
        ASSERT_EQ(scan(list.data(), 1000), 0);
        ASSERT_EQ(getSiteList(list.data(), 1000), 0);
    }
    EXPECT_LT(spaceTaken() - before, 8 << 20);  // each of them takes 256 KiB
}

TEST_F(SiteList, IsNoneWithoutTheFile) {
    setenv("QVP_SITE_LIST", (folder / "none").c_str(), 1);
    char list[8] = "before";
    EXPECT_EQ(getSiteList(list, sizeof list), -1);
    EXPECT_STREQ(list, "before");
    setenv("QVP_SITE_LIST", folder.path().c_str(), 1);
    EXPECT_EQ(getSiteList(list, sizeof list), -1);
    EXPECT_STREQ(list, "before");
    EXPECT_EQ(getSiteList(nullptr, 100), -1);
    EXPECT_EQ(getSiteList(list, 0), -1);
    EXPECT_EQ(getSiteList(list, -1), -1);
    EXPECT_STREQ(list, "before");
}

TEST_F(SiteList, IsNoneWhenReadingFailsMidway) {
    writeFile(folder / "list", "heading\n");
    setenv("QVP_SITE_LIST", (folder / "list").c_str(), 1);
    int failures = 0;
    bool reached = true;
    for (int step = 1; reached; step++) {
        std::string list(40, 'Z');
        CaughtFileCalls caught({.failAt = step, .error = EIO});
        const int result = getSiteList(list.data(), 40);
        reached = caught.made() >= step;
        failures += result != 0;
        EXPECT_EQ(list, result == 0 ? "heading\n\0"s + std::string(31, 'Z') : std::string(40, 'Z')) << step;
    }
    EXPECT_EQ(failures, 3);  // open, the read that gives the text, the read that tells its end
}

TEST_F(SiteList, IsMadeFromAScanOfTheWirelessInterface) {
    makeIw(
        R"sh(printf 'BSS 02:00:5e:00:53:01(on %s)\n\tfreq: 2437\n\tcapability: ESS (0x0001)\n\tsignal: -60.00 dBm\n' $2
printf '\tSSID: asked %s\n' "$*"
)sh");
    char list[1000] = "";
    ASSERT_EQ(scan(list, sizeof list), 0);
    EXPECT_STREQ(
        list + 101,
        "6   asked dev wlan7 scan             02:00:5e:00:53:01   NONE                   80        11b/g   In\n");
}

TEST_F(SiteList, TakesWhatAFailingScanHasPrinted) {
    makeIw("printf 'BSS 02:00:5e:00:53:01(on wlan7)\\n\\tSSID: n\\n'; exit 1\n");
    char list[1000] = "";
    ASSERT_EQ(scan(list, sizeof list), 0);
    EXPECT_EQ(std::string(list).size(), 202U);
}

TEST_F(SiteList, IsEmptyWhereAScanFoundNothing) {
    makeIw("exit 0\n");
    char list[1000] = "";
    ASSERT_EQ(scan(list, sizeof list), 0);
    EXPECT_EQ(std::string(list).size(), 101U);
}

TEST_F(SiteList, SaysWhyThereIsNone) {
    char list[1000] = "before";
    const auto said = [](auto ask) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(ask(), -1);
        return testing::internal::GetCapturedStderr();
    };
    makeIw("exit 1\n");
    EXPECT_EQ(said([&] { return scan(list, sizeof list); }),
              "qvp platform: no list of networks: iw dev wlan7 scan failed\n");
    std::filesystem::remove(folder / "net/wlan7/wireless");
    EXPECT_EQ(said([&] { return scan(list, sizeof list); }),
              "qvp platform: no list of networks: no wireless interface\n");
    const std::string missing = folder / "none";
    setenv("QVP_SITE_LIST", missing.c_str(), 1);
    EXPECT_EQ(said([&] { return getSiteList(list, sizeof list); }),
              "qvp platform: no list of networks: cannot read " + missing + ": No such file or directory\n");
}

TEST_F(SiteList, IsNoneWhereTheScanFailed) {
    char list[1000] = "before";
    for (const char* script : {"exit 240\n", "echo 'command failed'; exit 1\n", "kill -9 $$\n"}) {
        makeIw(script);
        EXPECT_EQ(scan(list, sizeof list), -1) << script;
        EXPECT_STREQ(list, "before");
    }
    makeIw("printf 'BSS 02:00:5e:00:53:01(on wlan7)\\n'\n");
    EXPECT_EQ(scan(list, 101), -1);
    EXPECT_STREQ(list, "before");
    std::filesystem::remove(folder / "net/wlan7/wireless");
    EXPECT_EQ(scan(list, sizeof list), -1);
    EXPECT_STREQ(list, "before");
}

// As the daemon does.
TEST_F(SiteList, KnowsHowTheScanEndedWhereChildrenAreIgnored) {
    const auto before = signal(SIGCHLD, SIG_IGN);
    char list[1000] = "before";
    makeIw("exit 1\n");
    EXPECT_EQ(scan(list, sizeof list), -1);
    EXPECT_STREQ(list, "before");
    makeIw("exit 0\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(scan(list, sizeof list), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(std::string(list).size(), 101U);
    signal(SIGCHLD, before);
}
