// Names, connections and the request, one function at a time.
#include <errno.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "upgrade/http_download.h"
#include "upgrade/http_server.h"
#include "upgrade/worker_fixture.h"

namespace worker {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Connect = Fresh;
using Request = Fresh;
using Resolve = Fresh;

bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

long openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

fake::Events times(int count, const std::string& event) { return fake::Events(static_cast<std::size_t>(count), event); }

// Taken by a socket that does not listen: connections to it are refused.
class RefusingPort {
public:
    RefusingPort() : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        socklen_t length = sizeof address;
        if (bind(socket_, plain, length) != 0 || getsockname(socket_, plain, &length) != 0) std::abort();
        number = ntohs(address.sin_port);
    }
    ~RefusingPort() { close(socket_); }
    RefusingPort(const RefusingPort&) = delete;
    RefusingPort& operator=(const RefusingPort&) = delete;

    std::uint16_t number;

private:
    int socket_;
};

TEST_F(Resolve, FirstAddressAsDottedText) {
    char dotted[80] = {};
    EXPECT_EQ(resolve_host("camera", dotted), 0);
    EXPECT_STREQ(dotted, "127.0.0.1");
    EXPECT_EQ(resolve_host("two.example", dotted), 0);
    EXPECT_STREQ(dotted, "127.0.0.2");
    EXPECT_EQ(resolve_host("nowhere", dotted), -1);
}

struct AttemptRow {
    const char* name;
    std::deque<int> errors;
    int result, attempts, sleeps;
};

const AttemptRow kAttempts[] = {
    {"at once", {}, 1, 1, 0},
    {"in progress, then there", {EINPROGRESS}, 1, 2, 1},
    {"refused, then in progress", {ECONNREFUSED, EINPROGRESS, EALREADY}, 1, 4, 3},
    {"the fifth", {ETIMEDOUT, ETIMEDOUT, ETIMEDOUT, ETIMEDOUT}, 1, 5, 4},
    {"never", {EALREADY, EALREADY, EALREADY, EALREADY, EALREADY}, 0, 5, 5},
};

TEST_F(Connect, FiveAttemptsASecondApart) {
    const HttpServer server;
    const std::string attempt = "connect 127.0.0.1:" + std::to_string(server.port());
    for (const AttemptRow& row : kAttempts) {
        SCOPED_TRACE(row.name);
        fake::clearEvents();
        NetworkPlan plan;
        plan.connectErrors = row.errors;
        planNetwork(plan);
        int socket = -1;
        EXPECT_EQ(connect_with_retry(&socket, "camera", server.port()), row.result);
        EXPECT_EQ(fake::eventsOf({"connect"}), times(row.attempts, attempt));
        EXPECT_EQ(fake::eventsOf({"sleep"}), times(row.sleeps, "sleep 1"));
        EXPECT_EQ(isOpen(socket), row.result == 1);
        if (row.result == 1) close(socket);
    }
}

TEST_F(Connect, RealRefusalsAreWaitedOutToo) {
    const RefusingPort port;
    int socket = -1;
    EXPECT_EQ(connect_with_retry(&socket, "camera", port.number), 0);
    EXPECT_EQ(fake::eventsOf({"connect"}).size(), 5u);
    EXPECT_EQ(fake::eventsOf({"sleep"}), times(5, "sleep 1"));
    EXPECT_FALSE(isOpen(socket));
    EXPECT_EQ(effects().back(), "sleep 1");
}

TEST_F(Connect, SocketThatCannotBeMade) {
    fake::failCall("socket", 1, EMFILE);
    int socket = 77;
    EXPECT_EQ(connect_with_retry(&socket, "camera", 80), 0);
    EXPECT_EQ(socket, -1);
    EXPECT_THAT(effects(), IsEmpty());
}

TEST_F(Connect, UnknownNameLeavesTheSocketOpen) {
    int socket = -1;
    EXPECT_EQ(connect_with_retry(&socket, "nowhere", 80), 0);
    EXPECT_THAT(effects(), ElementsAre("gethostbyname nowhere"));
    ASSERT_TRUE(isOpen(socket));
    close(socket);
}

TEST_F(Connect, FlagsThatCannotBeReadOrSetCloseTheSocket) {
    for (const int nth : {1, 2}) {
        fake::failCall("fcntl", nth, EBADF);
        int socket = -1;
        EXPECT_EQ(connect_with_retry(&socket, "camera", 80), 0);
        ASSERT_GE(socket, 0);
        EXPECT_FALSE(isOpen(socket)) << nth;
    }
    EXPECT_THAT(fake::eventsOf({"connect"}), IsEmpty());
}

struct PathRow {
    const char* name;
    std::string path, sent;
};

// The request has 1460 bytes of room, the last for its NUL.
const PathRow kPaths[] = {
    {"usual", "/fw.bin", "GET /fw.bin HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n"},
    {"empty", "", "GET  HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n"},
    {"no format", "/%s%n", "GET /%s%n HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n"},
    {"too long", std::string(2000, 'p'), "GET " + std::string(1455, 'p')},
};

TEST_F(Request, ByteForByteOnTheWire) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(row.name);
        HttpServer server([](Connection&) {});
        planNetwork({});
        int socket = -1;
        ASSERT_EQ(send_http_get(&socket, "camera", server.port(), row.path.c_str()), 0);
        ASSERT_TRUE(isOpen(socket));
        close(socket);
        EXPECT_EQ(server.received(), row.sent);
        EXPECT_EQ(sends(), 1);
    }
}

struct ArgumentRow {
    const char* name;
    const char* host;
    long port;
    const char* path;
};

const ArgumentRow kRefused[] = {
    {"no host", nullptr, 80, "/x"},
    {"no path", "camera", 80, nullptr},
    {"port -1", "camera", -1, "/x"},
    {"port 65536", "camera", 65536, "/x"},
};

TEST_F(Request, RefusedArgumentsReachNothing) {
    for (const ArgumentRow& row : kRefused) {
        SCOPED_TRACE(row.name);
        int socket = -1;
        EXPECT_EQ(send_http_get(&socket, row.host, row.port, row.path), -1);
        EXPECT_EQ(socket, -1);
        Downloaded download;
        EXPECT_EQ(http_download(row.host, row.port, row.path, &download.data), -1);
        EXPECT_TRUE(download.isOld());
    }
    EXPECT_EQ(send_http_get(nullptr, "camera", 80, "/x"), -1);
    EXPECT_EQ(http_download("camera", 80, "/x", nullptr), -1);
    EXPECT_THAT(effects(), IsEmpty());
}

TEST_F(Request, LowestAndHighestPort) {
    HttpServer server([](Connection&) {});
    NetworkPlan plan;
    plan.leadTo = server.port();
    planNetwork(plan);
    for (const long port : {0L, 65535L}) {
        int socket = -1;
        EXPECT_EQ(send_http_get(&socket, "camera", port, "/x"), 0);
        close(socket);
    }
    EXPECT_THAT(fake::eventsOf({"connect"}), ElementsAre("connect 127.0.0.1:0", "connect 127.0.0.1:65535"));
}

TEST_F(Request, WithoutAConnectionThereIsNoSocket) {
    const RefusingPort port;
    const long before = openDescriptors();
    int socket = 77;
    EXPECT_EQ(send_http_get(&socket, "camera", port.number, "/x"), -1);
    EXPECT_EQ(socket, -1);
    EXPECT_EQ(sends(), 0);
    Downloaded download;
    EXPECT_EQ(http_download("camera", port.number, "/x", &download.data), -1);
    EXPECT_TRUE(download.isOld());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Request, FailedSendClosesTheSocket) {
    HttpServer server([](Connection&) {});
    NetworkPlan plan;
    plan.sendError = ENOBUFS;
    planNetwork(plan);
    int socket = -1;
    EXPECT_EQ(send_http_get(&socket, "camera", server.port(), "/x"), -1);
    EXPECT_EQ(socket, -1);
    EXPECT_EQ(server.received(), "");
    Downloaded download;
    EXPECT_EQ(http_download("camera", server.port(), "/x", &download.data), -1);
    EXPECT_EQ(server.received(2), "");
}

volatile sig_atomic_t g_brokenPipes = 0;

TEST_F(Request, ClosedConnectionRaisesNoSignal) {
    g_brokenPipes = 0;
    const auto before = signal(SIGPIPE, [](int) { g_brokenPipes = g_brokenPipes + 1; });
    HttpServer server([](Connection&) {});
    NetworkPlan plan;
    plan.shutAfterConnect = true;
    planNetwork(plan);
    int socket = 77;
    EXPECT_EQ(send_http_get(&socket, "camera", server.port(), "/x"), -1);
    EXPECT_EQ(socket, -1);
    EXPECT_EQ(sends(), 1);
    EXPECT_EQ(g_brokenPipes, 0);
    signal(SIGPIPE, before);
}

}  // namespace
}  // namespace worker
