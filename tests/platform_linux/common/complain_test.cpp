#include "common/complain.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "support/child_process.h"

// Standard error is a pipe while a test runs.
class ComplainTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(pipe2(ends_, O_CLOEXEC), 0);
        standardError_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        ASSERT_EQ(dup2(ends_[1], STDERR_FILENO), STDERR_FILENO);
    }

    void TearDown() override {
        dup2(standardError_, STDERR_FILENO);
        for (int descriptor : {standardError_, ends_[0], ends_[1]}) close(descriptor);
    }

    void fill() const {
        fcntl(ends_[1], F_SETFL, O_NONBLOCK);
        const std::string bytes(4096, 'x');
        while (write(ends_[1], bytes.data(), bytes.size()) > 0) continue;
        fcntl(ends_[1], F_SETFL, 0);
    }

    void writeTo(int descriptor) const { ASSERT_EQ(dup2(descriptor, STDERR_FILENO), STDERR_FILENO); }
    int pipe() const { return ends_[1]; }

    std::string takeAll() const {
        fcntl(ends_[0], F_SETFL, O_NONBLOCK);
        std::string text;
        char bytes[4096];
        for (ssize_t length; (length = read(ends_[0], bytes, sizeof bytes)) > 0;) {
            text.append(bytes, static_cast<size_t>(length));
        }
        return text;
    }

private:
    int ends_[2] = {-1, -1};
    int standardError_ = -1;
};

TEST_F(ComplainTest, IsOneLine) {
    complain("%s is %d", "seven", 7);
    EXPECT_EQ(takeAll(), "qvp platform: seven is 7\n");
}

TEST_F(ComplainTest, DropsWhatNobodyTakesAndSaysSoOnce) {
    fill();
    complain("one");
    complain("two");
    takeAll();
    complain("three");
    complain("four");
    EXPECT_EQ(
        takeAll(),
        "qvp platform: complaints dropped because nobody took them: 2\nqvp platform: three\nqvp platform: four\n");
}

// One that stands still, with room for a part of a line.
TEST_F(ComplainTest, DropsWhatATerminalHasNoRoomFor) {
    const int reader = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    char name[64];
    ASSERT_EQ(grantpt(reader), 0);
    ASSERT_EQ(unlockpt(reader), 0);
    ASSERT_EQ(ptsname_r(reader, name, sizeof name), 0);
    const int terminal = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(terminal, 0);
    writeTo(terminal);
    const int status = inChild([&] {
        alarm(60);  // it would wait for good
        fcntl(terminal, F_SETFL, O_NONBLOCK);
        while (write(terminal, "x", 1) == 1) continue;
        char bytes[40];
        EXPECT_GT(read(reader, bytes, sizeof bytes), 0);
        fcntl(terminal, F_SETFL, 0);
        for (int number = 0; number < 100; number++) complain("%0500d", number);
    });
    EXPECT_EQ(status, 0);
    writeTo(pipe());
    close(terminal);
    close(reader);
}

TEST_F(ComplainTest, CountsWhatADiskHasNoRoomFor) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    writeTo(full);
    complain("one");
    complain("two");
    writeTo(pipe());
    complain("three");
    close(full);
    EXPECT_EQ(takeAll(), "qvp platform: complaints dropped because nobody took them: 2\nqvp platform: three\n");
}
