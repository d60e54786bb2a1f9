// The body of a reply: in pieces, cut short, with nobody speaking.
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "upgrade/http_download.h"
#include "upgrade/http_server.h"
#include "upgrade/worker_fixture.h"

namespace worker {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

using Body = Fresh;

constexpr std::size_t kHeader10 = 39;  // bytes of goodReply's header for a body of 10

std::string bodyOf(std::size_t size) {
    std::string body;
    for (std::size_t at = 0; at < size; ++at) body += static_cast<char>(at * 7 % 251);
    return body;
}

// Reads behind the header: each asks for what is left, 1024 bytes at most.
void expectReads(std::size_t header, std::size_t body) {
    const std::vector<Read> all = reads();
    std::size_t left = body;
    for (std::size_t at = header; at < all.size(); ++at) {
        EXPECT_EQ(all[at].wanted, std::min<std::size_t>(left, 1024)) << "with " << left << " bytes left";
        ASSERT_GE(all[at].got, 1);
        left -= static_cast<std::size_t>(all[at].got);
    }
    EXPECT_EQ(left, 0u);
}

TEST_F(Body, ArrivesInAnyPieces) {
    const std::vector<std::vector<std::size_t>> pieces = {{100000}, {1}, {7, 1, 1000, 13}, {1024}, {1025, 3}};
    for (const std::size_t size : {1, 1023, 1024, 1025, 5000}) {
        for (const std::vector<std::size_t>& sizes : pieces) {
            SCOPED_TRACE(std::to_string(size) + " bytes in pieces of " + std::to_string(sizes[0]));
            const std::string body = bodyOf(size);
            const std::string reply = goodReply(body);
            planNetwork({});
            HttpServer server([&](Connection& connection) {
                connection.readRequest();
                connection.sayInPieces(reply, sizes);
            });
            Downloaded download;
            // The last select's result: one socket was ready.
            EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), 1);
            ASSERT_NE(download.data, nullptr);
            EXPECT_EQ(download.text(size), body);
            expectReads(reply.size() - size, size);
            EXPECT_EQ(waits().size(), reads().size());
            EXPECT_NE(server.received(), "");
        }
    }
}

TEST_F(Body, NothingToWaitForIsTheOneSuccess) {
    HttpServer server([](Connection& connection) {
        connection.readRequest();
        connection.say(goodReply("") + "more than announced");
    });
    Downloaded download;
    EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), 0);
    EXPECT_TRUE(download.isNew());
    EXPECT_EQ(bytesReceived(), goodReply("").size());
    EXPECT_EQ(waits().size(), goodReply("").size());
}

TEST_F(Body, EndsWhereItWasAnnouncedToEnd) {
    HttpServer server([](Connection& connection) {
        connection.readRequest();
        connection.say(goodReply("0123456789") + "more than announced");
    });
    Downloaded download;
    EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), 1);
    EXPECT_EQ(download.text(10), "0123456789");
    EXPECT_EQ(bytesReceived(), kHeader10 + 10);
}

#ifndef __SANITIZE_THREAD__  // which itself writes to all that is asked for
long mostMemoryInKib() {
    rusage usage{};
    EXPECT_EQ(getrusage(RUSAGE_SELF, &usage), 0);
    return usage.ru_maxrss;
}

// A buffer of the announced size is asked for at once, but takes the camera's memory only as bytes come.
TEST_F(Body, AnAnnouncedLengthTakesNoMemory) {
    const long before = mostMemoryInKib();
    HttpServer server([](Connection& connection) {
        connection.readRequest();
        connection.say("HTTP/1.1 200 OK\r\nContent-Length: 62914560\r\n\r\n0123456789");
        connection.close();
    });
    Downloaded download;
    EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), -1);
    ASSERT_TRUE(download.isNew());
    EXPECT_EQ(download.text(10), "0123456789");
    EXPECT_LT(mostMemoryInKib() - before, 32 * 1024);
}
#endif

// How the connection or a wait goes wrong, and what is left of a body of ten bytes.
struct BreakRow {
    const char* name;
    std::size_t said;  // bytes of the reply; then the server is silent, or closes
    bool closes;
    WaitEnds end;  // of the wait for the next byte, if the server does not close
    int result;
    bool newBuffer;
};

const BreakRow kBreaks[] = {
    {"closed before the header", 0, true, {}, -1, false},
    {"closed in the header", 20, true, {}, -1, false},
    {"closed before the body", kHeader10, true, {}, -1, true},
    {"closed in the body", kHeader10 + 3, true, {}, -1, true},
    {"silent from the start", 0, false, WaitEnds::InTimeOut, -1, false},
    {"silent in the header", 20, false, WaitEnds::InTimeOut, -1, false},
    {"silent before the body", kHeader10, false, WaitEnds::InTimeOut, -1, true},
    {"silent in the body", kHeader10 + 9, false, WaitEnds::InTimeOut, -1, true},
    {"wait fails in the header", 38, false, WaitEnds::InFailure, -1, false},
    {"wait fails in the body", kHeader10 + 3, false, WaitEnds::InFailure, -1, true},
};

TEST_F(Body, BrokenOffDownloadsFail) {
    const std::string reply = goodReply("0123456789");
    ASSERT_EQ(reply.size(), kHeader10 + 10);
    for (const BreakRow& row : kBreaks) {
        SCOPED_TRACE(row.name);
        NetworkPlan plan;
        if (!row.closes) plan.waits[row.said] = row.end;
        planNetwork(plan);
        HttpServer server([&](Connection& connection) {
            connection.readRequest();
            connection.say(reply.substr(0, row.said));
            if (row.closes) connection.close();
        });
        Downloaded download;
        EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), row.result);
        EXPECT_EQ(bytesReceived(), row.said);
        EXPECT_EQ(server.received(), "GET /x HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n");
        ASSERT_EQ(download.isNew(), row.newBuffer);
        if (!row.newBuffer) continue;
        const std::size_t got = row.said - kHeader10;
        EXPECT_EQ(download.text(10), std::string("0123456789").substr(0, got) + std::string(10 - got, '\0'));
    }
}

TEST_F(Body, LimitOfItsOwn) {
    HttpServer server([](Connection& connection) {
        connection.readRequest();
        connection.sayInPieces(goodReply("0123456789"), {1});
    });
    Downloaded download;
    EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), 1);
    const std::vector<Wait> all = waits();
    ASSERT_THAT(all, SizeIs(kHeader10 + 10));
    for (std::size_t byte = 0; byte < all.size(); ++byte) {
        const std::size_t before = byte < kHeader10 ? byte : byte - kHeader10;
        EXPECT_EQ(all[byte].microseconds, 5000000 - static_cast<long>(before) * 1000) << byte;
        EXPECT_EQ(all[byte].inSet, 1);
    }
}

// A wait that times out although its byte arrives right after: the last select's result decides, whatever came.
TEST_F(Body, LastWaitDecides) {
    for (const std::size_t timedOut : {std::size_t{0}, std::size_t{4}}) {
        SCOPED_TRACE(timedOut);
        NetworkPlan plan;
        plan.waits[kHeader10 + timedOut] = WaitEnds::InTimeOutTooEarly;
        planNetwork(plan);
        HttpServer server([&](Connection& connection) {
            connection.readRequest();
            connection.sayInPieces(goodReply("0123456789"), {kHeader10, timedOut == 0 ? 10 : timedOut, 10});
        });
        Downloaded download;
        EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), 0);
        EXPECT_EQ(download.text(10), "0123456789");
    }
}

// Fills descriptors until the next one is `next`; closes them at the end.
class Descriptors {
public:
    explicit Descriptors(int next) {
        for (int made = 0; made < next - 1;) {
            made = open("/dev/null", O_RDONLY | O_CLOEXEC);
            if (made < 0) break;
            if (made < next) all_.push_back(made);
            if (made >= next) close(made);
        }
    }
    ~Descriptors() {
        for (const int descriptor : all_) close(descriptor);
    }
    Descriptors(const Descriptors&) = delete;
    Descriptors& operator=(const Descriptors&) = delete;

private:
    std::vector<int> all_;
};

TEST_F(Body, SocketBeyondTheSetIsNotWaitedFor) {
    rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_max < 1100) GTEST_SKIP() << "no more than " << limit.rlim_max << " descriptors here";
    limit.rlim_cur = 1100;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    for (const int next : {1023, 1024}) {
        SCOPED_TRACE(next);
        planNetwork({});
        HttpServer server([](Connection& connection) {
            connection.readRequest();
            connection.say(goodReply(""));
        });
        const Descriptors filled(next);
        Downloaded download;
        EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), next == 1023 ? 0 : -1);
        const std::vector<Wait> all = waits();
        EXPECT_EQ(all.empty() ? 0 : all.front().count, next == 1023 ? 1024 : 0);
        EXPECT_EQ(server.received(), "GET /x HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n");
    }
}

}  // namespace
}  // namespace worker
