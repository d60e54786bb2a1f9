// The header of a reply: where it ends, what it must say.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "upgrade/http_download.h"
#include "upgrade/http_server.h"
#include "upgrade/worker_fixture.h"

namespace worker {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

using Header = Fresh;

// Two connected sockets, one to hear with and one to say with.
struct Pair {
    Pair() {
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) std::abort();
    }
    ~Pair() {
        hangUp();
        close(ends[0]);
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    void say(const std::string& text) const {
        if (write(ends[1], text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
    }
    void hangUp() {
        if (ends[1] >= 0) close(ends[1]);
        ends[1] = -1;
    }
    std::string rest() const {
        char text[256];
        const ssize_t length = read(ends[0], text, sizeof text);
        return length > 0 ? std::string(text, static_cast<std::size_t>(length)) : "";
    }

    int ends[2];
};

struct EndRow {
    const char* name;
    std::string said;
    int capacity;
    int result;
    std::string rest;  // not taken
};

const EndRow kEnds[] = {
    {"blank line alone", "\r\n\r\n", 5, 0, ""},
    {"blank line at the last byte", "\r\n\r\n", 4, -1, ""},
    {"one byte to spare", "A: b\r\n\r\n", 9, 0, ""},
    {"none to spare", "A: b\r\n\r\n", 8, -1, ""},
    {"room for one byte", "A: b\r\n\r\n", 1, -1, ": b\r\n\r\n"},
    {"room for three bytes", "A: b\r\n\r\n", 3, -1, "b\r\n\r\n"},
    {"stops behind the blank line", "A: b\r\n\r\nbody", 64, 0, "body"},
    {"bare line feeds are no blank line", "A: b\n\n\r\n\n\r\r\n\r\n.", 64, 0, "."},
    {"closed early", "A: b\r\n\r", 64, -1, ""},
    {"closed at once", "", 64, -1, ""},
};

TEST_F(Header, EndsAtTheBlankLine) {
    for (const EndRow& row : kEnds) {
        SCOPED_TRACE(row.name);
        Pair pair;
        pair.say(row.said);
        pair.hangUp();
        const auto size = static_cast<std::size_t>(row.capacity);
        const auto buffer = std::make_unique<char[]>(size);
        ASSERT_EQ(receive_http_header(pair.ends[0], buffer.get(), row.capacity), row.result);
        const std::size_t taken = row.said.size() - row.rest.size();
        EXPECT_EQ(std::string(buffer.get(), taken), row.said.substr(0, taken));
        EXPECT_EQ(std::string(buffer.get() + taken, size - taken), std::string(size - taken, '\0'));
        EXPECT_EQ(pair.rest(), row.rest);
    }
}

TEST_F(Header, RefusedArgumentsReadNothing) {
    const Pair pair;
    pair.say("\r\n\r\n");
    char buffer[8];
    EXPECT_EQ(receive_http_header(-1, buffer, 8), -1);
    EXPECT_EQ(receive_http_header(pair.ends[0], nullptr, 8), -1);
    EXPECT_EQ(receive_http_header(pair.ends[0], buffer, 0), -1);
    EXPECT_EQ(receive_http_header(pair.ends[0], buffer, -1), -1);
    EXPECT_EQ(pair.rest(), "\r\n\r\n");
    EXPECT_THAT(waits(), IsEmpty());
}

TEST_F(Header, FailedWaitEndsIt) {
    const Pair pair;
    pair.say("AB\r\n\r\n");
    NetworkPlan plan;
    plan.waits[2] = WaitEnds::InFailure;
    planNetwork(plan);
    char buffer[64] = {};
    EXPECT_EQ(receive_http_header(pair.ends[0], buffer, sizeof buffer), -1);
    EXPECT_EQ(pair.rest(), "\r\n\r\n");
}

// The limit is what the waits before have left of it, and a set that a time-out has emptied stays empty.
TEST_F(Header, OneLimitForAllWaits) {
    const Pair pair;
    pair.say("ABCD\r\n\r\n");
    NetworkPlan plan;
    plan.waits[5] = WaitEnds::InTimeOutTooEarly;
    planNetwork(plan);
    char buffer[64] = {};
    EXPECT_EQ(receive_http_header(pair.ends[0], buffer, sizeof buffer), 0);
    const std::vector<Wait> all = waits();
    ASSERT_THAT(all, SizeIs(8));
    for (std::size_t byte = 0; byte < 8; ++byte) {
        SCOPED_TRACE(byte);
        EXPECT_EQ(all[byte].count, pair.ends[0] + 1);
        EXPECT_EQ(all[byte].microseconds, byte <= 5 ? 5000000 - static_cast<long>(byte) * 1000 : 0);
        EXPECT_EQ(all[byte].inSet, byte <= 5 ? 1 : 0);
        EXPECT_EQ(reads()[byte].wanted, 1u);
    }
}

// Descriptors that no set has room for are never put into one.
TEST_F(Header, DescriptorsBeyondTheSet) {
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_max < 1100) GTEST_SKIP() << "no more than " << limit.rlim_max << " descriptors here";
    limit.rlim_cur = 1100;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    for (const int number : {1023, 1024, 1025}) {
        SCOPED_TRACE(number);
        planNetwork({});
        const Pair pair;
        pair.say("\r\n\r\n");
        const int high = fcntl(pair.ends[0], F_DUPFD, number);
        ASSERT_EQ(high, number);
        char buffer[64] = {};
        EXPECT_EQ(receive_http_header(high, buffer, sizeof buffer), number < 1024 ? 0 : -1);
        EXPECT_EQ(waits().size(), number < 1024 ? 4u : 0u);
        close(high);
    }
}

// What http_download() made of a reply with an old buffer in place.
enum class Buffer { Old, New, None };

struct ReplyRow {
    const char* name;
    std::string reply;
    int result;
    Buffer buffer;
};

std::string withStatus(const std::string& line) { return httpReply({line, "Content-Length: 0"}); }

std::string withLength(const std::string& line) { return httpReply({"HTTP/1.1 200 OK", line}); }

// A whole header of that size, with a body of no bytes.
std::string ofSize(std::size_t size) {
    const std::string bare = httpReply({"HTTP/1.1 200 OK", "Content-Length: 0", "X: "});
    return httpReply({"HTTP/1.1 200 OK", "Content-Length: 0", "X: " + std::string(size - bare.size(), 'x')});
}

const ReplyRow kReplies[] = {
    {"1022 bytes", ofSize(1022), 0, Buffer::New},
    {"1023 bytes, the most", ofSize(1023), 0, Buffer::New},
    {"1024 bytes", ofSize(1024), -1, Buffer::Old},
    {"1025 bytes", ofSize(1025), -1, Buffer::Old},
    {"blank line cut by the 1024th byte", ofSize(1027), -1, Buffer::Old},
    {"no end at all", std::string(2000, 'x'), -1, Buffer::Old},

    {"200", withStatus("HTTP/1.1 200 OK"), 0, Buffer::New},
    {"200 alone", withStatus("HTTP/1.1 200"), 0, Buffer::New},
    {"200 of an older version", withStatus("HTTP/1.0 200 OK"), 0, Buffer::New},
    {"200 behind blanks", withStatus("HTTP/1.1   200 OK"), 0, Buffer::New},
    {"200 without a blank", withStatus("HTTP/1.1200 OK"), 0, Buffer::New},
    {"200 with leading zeros", withStatus("HTTP/1.1 00200 OK"), 0, Buffer::New},
    {"200 and letters", withStatus("HTTP/1.1 200abc"), 0, Buffer::New},
    {"404", withStatus("HTTP/1.1 404 Not Found"), -1, Buffer::Old},
    {"201", withStatus("HTTP/1.1 201 Created"), -1, Buffer::Old},
    {"199", withStatus("HTTP/1.1 199 Below"), -1, Buffer::Old},
    {"2000", withStatus("HTTP/1.1 2000 OK"), -1, Buffer::Old},
    {"20", withStatus("HTTP/1.1 20 OK"), -1, Buffer::Old},
    {"-200", withStatus("HTTP/1.1 -200 OK"), -1, Buffer::Old},
    {"200 and two to the power of 32", withStatus("HTTP/1.1 4294967496 OK"), -1, Buffer::Old},
    {"number beyond all numbers", withStatus("HTTP/1.1 18446744073709551816 OK"), -1, Buffer::Old},
    {"no number", withStatus("HTTP/1.1 OK 200"), -1, Buffer::Old},
    {"number in another place", withStatus("HTTP/2 200 OK"), -1, Buffer::Old},
    {"number first", withStatus("200 OK"), -1, Buffer::Old},
    {"shorter than the place of the number", "\r\n\r\n", -1, Buffer::Old},

    {"no length", withLength("Content-Type: text/plain"), -1, Buffer::Old},
    {"length in lower case", withLength("content-length: 0"), -1, Buffer::Old},
    {"length in upper case", withLength("CONTENT-LENGTH: 0"), -1, Buffer::Old},
    {"length with a blank before its colon", withLength("Content-Length : 0"), -1, Buffer::Old},
    {"length behind a NUL", withLength(std::string("X\0Content-Length: 0", 19)), -1, Buffer::Old},
    {"length in another field's name", withLength("X-Content-Length: 0"), 0, Buffer::New},
    {"length behind two blanks", withLength("Content-Length:  0"), 0, Buffer::New},
    {"length without its blank loses a digit", withLength("Content-Length:5"), 0, Buffer::New},
    {"length without a number", withLength("Content-Length: none"), 0, Buffer::New},
    {"length at the very end", withLength("Content-Length:"), 0, Buffer::New},
    {"first of two lengths", withLength("Content-Length: 0\r\nContent-Length: 7"), 0, Buffer::New},
    {"negative length", withLength("Content-Length: -1"), -1, Buffer::None},
    {"length beyond all memory", withLength("Content-Length: 2147483647"), -1, Buffer::None},
    {"length that would wrap to nothing", withLength("Content-Length: 4294967296"), -1, Buffer::None},
    {"length beyond all numbers", withLength("Content-Length: 99999999999999999999"), -1, Buffer::None},
};

TEST_F(Header, DecidesWhatBecomesOfTheDownload) {
    for (const ReplyRow& row : kReplies) {
        SCOPED_TRACE(row.name);
        planNetwork({});
        HttpServer server([&](Connection& connection) {
            connection.readRequest();
            connection.say(row.reply);
        });
        Downloaded download;
        EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), row.result);
        EXPECT_EQ(download.isOld(), row.buffer == Buffer::Old);
        EXPECT_EQ(download.isNew(), row.buffer == Buffer::New);
        EXPECT_EQ(server.received(), "GET /x HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n");
    }
}

TEST_F(Header, MemoryThatIsNotThere) {
    HttpServer server([](Connection& connection) {
        connection.readRequest();
        connection.say(goodReply("body"));
    });
    fake::failCall("calloc", 1, ENOMEM);
    Downloaded download;
    EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), -1);
    EXPECT_EQ(download.data, nullptr);
    EXPECT_NE(server.received(), "");
}

}  // namespace
}  // namespace worker
