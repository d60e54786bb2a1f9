// Numbered slots as files of a folder.
#include "shared_integers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <cstdlib>
#include <optional>
#include <thread>

#include "platform.h"
#include "support/temporary_folder.h"

using std::string_literals::operator""s;

static std::optional<int> readFrom(const std::string& folder, int slot) {
    int value = -559038737;
    const int result = readSharedInteger(folder.c_str(), slot, value);
    if (result == 0) return value;
    EXPECT_EQ(result, -1);
    EXPECT_EQ(value, -559038737);
    return std::nullopt;
}

class SharedIntegers : public testing::Test {
protected:
    std::string slots() const { return folder.path() + "/run/sysinfo"; }
    int write(int number, int value) const { return writeSharedInteger(slots().c_str(), number, value); }
    std::optional<int> read(int number) const { return readFrom(slots(), number); }
    std::string slot(int number) const { return slots() + "/" + std::to_string(number); }

    TemporaryFolder folder;
};

TEST_F(SharedIntegers, GiveBackWhatWasWritten) {
    EXPECT_EQ(read(4), std::nullopt);
    for (const int value : {1, 2, 3, 0, -1, INT_MAX, INT_MIN}) {
        ASSERT_EQ(write(4, value), 0);
        EXPECT_EQ(read(4), value);
        EXPECT_EQ(readFile(slot(4)), std::to_string(value) + "\n");
    }
    EXPECT_EQ(write(0, 7), 0);
    EXPECT_EQ(write(INT_MAX, 8), 0);
    EXPECT_EQ(read(0), 7);
    EXPECT_EQ(read(INT_MAX), 8);
    EXPECT_EQ(read(4), INT_MIN);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(slots()), {}), 3);  // nothing else is left
}

// The environment is read when the program starts, so the test run has to set it.
TEST_F(SharedIntegers, AreWhereTheEnvironmentSays) {
    const char* path = getenv("QVP_SYSINFO");
    if (path == nullptr) GTEST_SKIP() << "QVP_SYSINFO is not set";
    int value = 0;
    ASSERT_EQ(SIWriteInt(4, 1234), 0);
    EXPECT_EQ(readFile(std::string(path) + "/4"), "1234\n");
    EXPECT_EQ(SIReadInt(4, &value), 0);
    EXPECT_EQ(SIReadInt(4, nullptr), -1);
    EXPECT_EQ(value, 1234);
}

TEST_F(SharedIntegers, CanBeReadByOthers) {
    ASSERT_EQ(write(4, 1), 0);
    struct stat status;
    ASSERT_EQ(stat(slot(4).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0444, 0444U);
}

TEST_F(SharedIntegers, AreMissingWhereTheTextIsNoNumber) {
    std::filesystem::create_directories(slots());
    const std::string endless(500, '1'), far = "1" + std::string(62, ' ') + "x";
    const struct {
        std::string text;
        std::optional<int> value;
    } rows[] = {
        {"1", 1},       {"1\n", 1},   {"1 \r\n\n", 1}, {"-5\n", -5},  {"2147483647\n", INT_MAX},
        {"", {}},       {"\n", {}},   {"x", {}},       {"1x\n", {}},  {"2147483648\n", {}},
        {"1\n2\n", {}}, {" 1\n", {}}, {"0x1", {}},     {"1\0"s, {}},  {"-2147483649", {}},
        {"\0"s, {}},    {"1.5", {}},  {"--1", {}},     {endless, {}}, {far, {}},
    };
    for (const auto& row : rows) {
        writeFile(slot(4), row.text);
        EXPECT_EQ(read(4), row.value) << row.text;
    }
}

TEST_F(SharedIntegers, RefuseWhatIsNoSlot) {
    EXPECT_EQ(read(-1), std::nullopt);
    EXPECT_EQ(write(-1, 1), -1);
    std::filesystem::create_directories(slot(4));
    EXPECT_EQ(read(4), std::nullopt);
    EXPECT_EQ(write(4, 1), -1);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(slots()), {}), 1);
}

TEST_F(SharedIntegers, FailWhereTheFolderCannotBe) {
    writeFile(folder / "file", "x");
    for (const std::string& path : {folder.path() + "/file/sysinfo", std::string(5000, '/')}) {
        EXPECT_EQ(writeSharedInteger(path.c_str(), 4, 1), -1);
        EXPECT_EQ(readFrom(path, 4), std::nullopt);
    }
}

TEST_F(SharedIntegers, AreWholeWhileThreadsWriteThem) {
    ASSERT_EQ(write(4, 111111111), 0);
    std::vector<std::thread> writers;
    for (const int value : {111111111, -22, 3}) {
        writers.emplace_back([this, value] {
            for (int round = 0; round < 200; round++) EXPECT_EQ(write(4, value), 0);
        });
    }
    for (int round = 0; round < 400; round++) {
        const std::optional<int> value = read(4);
        EXPECT_TRUE(value == 111111111 || value == -22 || value == 3);
    }
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(slots()), {}), 1);
}
