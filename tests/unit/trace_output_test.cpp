// Lines of trace on an output that takes a part of a line at once, or none of it, as sockets, terminals and disks do.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "system/trace_output.h"

namespace unit {
namespace {

constexpr int kMostWrites = 100;  // for a few lines

// Takes so many bytes of each write at most, or has it fail with this errno where the number is below zero; of later
// writes it takes everything.
struct NarrowOutput {
    bool isThere = false;
    std::vector<int> room;
    std::string taken;
    int writes = 0;
};

NarrowOutput g_narrowOutput;

ssize_t takePart(NarrowOutput& output, const char* bytes, std::size_t length) {
    if (++output.writes > kMostWrites) std::abort();
    int room = static_cast<int>(length);
    if (!output.room.empty()) {
        room = std::min(room, output.room.front());
        output.room.erase(output.room.begin());
    }
    if (room < 0) {
        errno = -room;
        return -1;
    }
    output.taken.append(bytes, static_cast<std::size_t>(room));
    return room;
}

std::string dropped(int count) {
    return "qvp: lines of trace dropped because nobody took them: " + std::to_string(count) + "\n";
}

class TraceOutput : public testing::Test {
protected:
    void SetUp() override { g_narrowOutput = {true, {}, "", 0}; }
    ~TraceOutput() override {
        putTrace("", 0);  // leaves nothing to tell
        g_narrowOutput = {};
    }

    // What has come of these lines when there was that room.
    static std::string after(const std::vector<int>& room, const std::vector<std::string>& lines) {
        g_narrowOutput.room = room;
        g_narrowOutput.taken = "";
        for (const std::string& line : lines) putTrace(line.data(), line.size());
        return g_narrowOutput.taken;
    }
};

TEST_F(TraceOutput, GoesOnWithTheRestOfALine) {
    EXPECT_EQ(after({3, 4}, {"abcdefghij\n", "next\n"}), "abcdefghij\nnext\n");
    EXPECT_EQ(after({10}, {"abcdefghij\n", "next\n"}), "abcdefghij\nnext\n");
}

TEST_F(TraceOutput, GoesOnAfterASignal) {
    EXPECT_EQ(after({-EINTR, 3, -EINTR}, {"abcdefghij\n", "next\n"}), "abcdefghij\nnext\n");
}

TEST_F(TraceOutput, SaysLaterHowManyLinesFoundNoRoom) {
    for (const int reason : {EAGAIN, ENOSPC, EDQUOT, EFBIG}) {
        EXPECT_EQ(after({-reason, -reason, -reason}, {"a\n", "b\n", "c\n", "d\n", "e\n"}), dropped(3) + "d\ne\n")
            << reason;
    }
}

TEST_F(TraceOutput, EndsALineThatWasCut) {
    for (const int reason : {EAGAIN, ENOSPC}) {
        EXPECT_EQ(after({4, -reason}, {"abcdefgh\n", "next\n"}), "abcd\n" + dropped(1) + "next\n");
        EXPECT_EQ(after({4, 2, -reason, -reason}, {"abcdefgh\n", "b\n", "c\n"}), "abcdef\n" + dropped(2) + "c\n");
    }
}

TEST_F(TraceOutput, EndsACutLineOnce) {
    EXPECT_EQ(after({2, -EAGAIN, 100, -EAGAIN}, {"abc\n", "b\n", "c\n"}), "ab\n" + dropped(1) + dropped(1) + "c\n");
}

TEST_F(TraceOutput, EndsWhatItCouldNotTellWhole) {
    EXPECT_EQ(after({-EAGAIN, 5, -EAGAIN}, {"a\n", "b\n", "c\n"}), "qvp: \n" + dropped(2) + "c\n");
}

TEST_F(TraceOutput, HasNothingToTellToAReaderThatHasGone) {
    EXPECT_EQ(after({-EPIPE}, {"a\n", "b\n"}), "b\n");
    EXPECT_EQ(after({3, -EPIPE}, {"abcdef\n", "b\n"}), "abcb\n");
}

}  // namespace
}  // namespace unit

extern "C" ssize_t __real_write(int descriptor, const void* bytes, size_t length);
extern "C" ssize_t __wrap_write(int descriptor, const void* bytes, size_t length);
extern "C" ssize_t __wrap_write(int descriptor, const void* bytes, size_t length) {
    unit::NarrowOutput& output = unit::g_narrowOutput;
    if (!output.isThere || descriptor != STDERR_FILENO) return __real_write(descriptor, bytes, length);
    return unit::takePart(output, static_cast<const char*>(bytes), length);
}
