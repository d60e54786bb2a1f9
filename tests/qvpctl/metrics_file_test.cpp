#include "qvpctl/metrics/metrics_file.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <optional>

#include "client/error.h"
#include "qvpctl/exit_code.h"
#include "support/temporary_folder.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

class MetricsFileTest : public testing::Test {
protected:
    void begin() { file_.emplace(path_, kStart); }

    void hear() { file_->add({}, 2, 1700000000); }

    std::string cameras() const {
        const std::string text = readFile(path_);
        const size_t at = text.find("\nqvp_cameras ");
        return at == text.npos ? "" : text.substr(at + 13, text.find('\n', at + 1) - at - 13);
    }

    // What it says.
    std::string keepUp(MetricsFile::Time now) {
        CaptureStderr();
        file_->keepUp(now);
        return GetCapturedStderr();
    }

    static std::string whyNot(const std::string& path) {
        try {
            const MetricsFile file(path, kStart);
        } catch (const client::Error& error) {
            EXPECT_EQ(exitCodeOf(error.kind()), 3);
            return error.what();
        }
        return "";
    }

    static constexpr MetricsFile::Time kStart{1000s};
    TemporaryFolder folder_;
    std::string path_ = folder_ / "qvp.prom";
    std::optional<MetricsFile> file_;
};

TEST_F(MetricsFileTest, IsThereFromTheStartToTheEnd) {
    begin();
    EXPECT_EQ(cameras(), "0");
    EXPECT_THAT(folder_.names(), ElementsAre("qvp.prom"));
    file_.reset();
    EXPECT_THAT(folder_.names(), ElementsAre());
}

TEST_F(MetricsFileTest, IsWrittenAtMostOnceASecond) {
    begin();
    hear();
    EXPECT_EQ(file_->due(), kStart + 1s);
    file_->keepUp(kStart + 999ms);
    EXPECT_EQ(cameras(), "0");
    file_->keepUp(kStart + 1s);
    EXPECT_EQ(cameras(), "1");
    EXPECT_THAT(folder_.names(), ElementsAre("qvp.prom"));
    EXPECT_EQ(file_->due(), kStart + 31s);
    hear();
    EXPECT_EQ(file_->due(), kStart + 2s);
}

TEST_F(MetricsFileTest, IsWrittenAsASignOfLife) {
    begin();
    EXPECT_EQ(file_->due(), kStart + 30s);
    fs::remove(path_);
    file_->keepUp(kStart + 29s);
    EXPECT_FALSE(fs::exists(path_));
    file_->keepUp(kStart + 31s);
    EXPECT_EQ(cameras(), "0");
    EXPECT_EQ(file_->due(), kStart + 61s);
}

TEST_F(MetricsFileTest, TakesThePlaceOfAnOlderOne) {
    writeFile(path_, "qvp_cameras 99\n");
    begin();
    EXPECT_EQ(cameras(), "0");
}

TEST_F(MetricsFileTest, ItsModeIsThatOfTheUmask) {
    for (const mode_t mask : {0022, 0027}) {
        const mode_t before = umask(mask);
        begin();
        umask(before);
        struct stat status {};
        ASSERT_EQ(stat(path_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask);
    }
}

TEST_F(MetricsFileTest, IsNotWrittenThroughALinkThatWaitsForIt) {
    const fs::path other = folder_ / "other";
    writeFile(other, "untouched");
    fs::create_symlink(other, path_ + "." + std::to_string(getpid()));
    begin();
    EXPECT_EQ(readFile(other), "untouched");
    EXPECT_EQ(cameras(), "0");
    EXPECT_THAT(folder_.names(), ElementsAre("other", "qvp.prom"));
}

TEST_F(MetricsFileTest, ThatCannotBeWrittenIsAnErrorAtTheStart) {
    EXPECT_EQ(whyNot(folder_ / "none/qvp.prom"),
              "cannot write " + (folder_ / "none/qvp.prom").string() + ": No such file or directory");
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(whyNot(path_), "cannot write " + path_ + ": it is no regular file");
    EXPECT_EQ(whyNot(folder_.path()), "cannot write " + folder_.path() + ": it is no regular file");
    EXPECT_TRUE(fs::is_fifo(path_));
    EXPECT_THAT(folder_.names(), ElementsAre("qvp.prom"));
}

TEST_F(MetricsFileTest, ThatItCannotBeWrittenIsSaidOnceUntilItCan) {
    begin();
    for (int round = 0; round < 2; round++) {
        const auto now = kStart + round * 10s;
        fs::remove(path_);
        fs::create_directory(path_);
        hear();
        EXPECT_EQ(keepUp(now + 1s), "qvpctl: cannot write " + path_ + ": it is no regular file\n");
        EXPECT_THAT(folder_.names(), ElementsAre("qvp.prom"));
        EXPECT_EQ(file_->due(), now + 2s);
        EXPECT_EQ(keepUp(now + 2s), "");
        fs::remove(path_);
        EXPECT_EQ(keepUp(now + 3s), "qvpctl: " + path_ + " is written again\n");
        EXPECT_EQ(cameras(), "1");
        hear();
        EXPECT_EQ(keepUp(now + 5s), "");
    }
}
