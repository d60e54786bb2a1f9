// Whole runs of both workers: what becomes of each address, and what is left in the record.
#include <string>
#include <vector>

#include "upgrade/conditions.h"
#include "upgrade/download_thread.h"
#include "upgrade/http_server.h"
#include "upgrade/thread_calls.h"
#include "upgrade/worker_fixture.h"

namespace worker {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const fake::Events kInstallConfiguration = {
    "cfgAesDecode 9",
    "unpackCFG 9",
    "execv /bin/sh sh -c /var/reboot -d 5 2>/dev/null 1>/dev/null&",
};

const fake::Events kInstallFirmware = {
    "VerifyFWCode 9",
    "execv /bin/sh sh -c /etc/init.d/stop_daemon_when_fwup.sh 2>/dev/null 1>/dev/null",
    "sleep 1",
    "execv /bin/sh sh -c /usr/sbin/twinkling 2>/dev/null 1>/dev/null&",
    "execv /bin/sh sh -c /usr/sbin/userconfig -backup /mnt/flash/config/restore.ini 2>/dev/null 1>/dev/null",
    "UpgradeFWCode 9",
    "SIWriteInt 4 2",
    "execv /bin/sh sh -c /var/reboot -d 5 2>/dev/null 1>/dev/null&",
};

fake::Events successOf(Kind kind, const std::string& host, const std::string& port) {
    fake::Events events = {"gethostbyname " + host, "connect 127.0.0.1:" + port};
    const fake::Events& install = kind == Kind::Configuration ? kInstallConfiguration : kInstallFirmware;
    events.insert(events.end(), install.begin(), install.end());
    return events;
}

// What a failed run adds to the log.
fake::Events failureOf(Kind kind) {
    return kind == Kind::Configuration ? fake::Events{} : fake::Events{"SIWriteInt 4 3"};
}

std::string requestFor(const std::string& path) {
    return "GET " + path + " HTTP/1.1\r\nUser-Agent: \r\nConnection: Keep-Alive\r\n\r\n";
}

// A server that says one thing to everybody, and every connection led to it.
class Saying : public HttpServer {
public:
    explicit Saying(const std::string& reply)
        : HttpServer([reply](Connection& connection) {
              connection.readRequest();
              connection.say(reply);
          }) {
        NetworkPlan plan;
        plan.leadTo = port();
        planNetwork(plan);
    }
};

struct UrlRow {
    const char* name;
    std::string url, lowered;
    std::string path;  // empty: the run fails before it reaches anything
};

// Of the address only what is left from one byte behind "https://" counts: the host is always "ttps".
const UrlRow kUrls[] = {
    {"empty", "", "", ""},
    {"only http", "HTTP://Camera/X", "http://camera/x", ""},
    {"only https", "https://camera/x", "https://camera/x", ""},
    {"only https, port", "https://camera:8443/x", "https://camera:8443/x", ""},
    {"another scheme", "ftp://camera/x", "ftp://camera/x", ""},
    {"https cut short", "https:/http://camera/x", "https:/http://camera/x", ""},
    {"http cut short", "https://camera/http:/x", "https://camera/http:/x", ""},
    {"http behind", "https://camera/http://file", "https://camera/http://file", "//camera/http://file"},
    {"http before", "http://mirror/https://camera/x", "http://mirror/https://camera/x", "//camera/x"},
    {"port", "https://camera:8080/http://f", "https://camera:8080/http://f", "//camera:8080/http://f"},
    {"nothing but both", "https://http://", "https://http://", "//http://"},
    {"text around", "get https://a and http://b now", "get https://a and http://b now", "//a and http://b now"},
    {"first of two", "https://a/https://b/http://c", "https://a/https://b/http://c", "//a/https://b/http://c"},
    {"capitals", "HTTPS://CAM.Example/HTTP://F.BIN", "https://cam.example/http://f.bin", "//cam.example/http://f.bin"},
    {"255 bytes", "https://http://" + std::string(240, 'X'), "https://http://" + std::string(240, 'x'),
     "//http://" + std::string(240, 'x')},
};

TEST_F(WorkerTest, EveryFormOfAddress) {
    for (const Kind kind : kBothKinds) {
        for (const UrlRow& row : kUrls) {
            SCOPED_TRACE(std::string(nameOf(kind)) + ": " + row.name);
            fake::clearEvents();
            Saying server(goodReply(""));
            setUrl(state, row.url);
            state.data_length = 9;
            run(kind);
            EXPECT_EQ(state.url, row.lowered);
            EXPECT_EQ(state.data_length, 9);
            if (row.path.empty()) {
                EXPECT_EQ(status(), 2);
                EXPECT_EQ(effects(), failureOf(kind));
                continue;
            }
            EXPECT_EQ(status(), 0);
            EXPECT_EQ(effects(), successOf(kind, "ttps", "0"));
            EXPECT_EQ(server.received(), requestFor(row.path));
        }
    }
}

TEST_F(WorkerTest, AddressWithoutItsEnd) {
    for (const Kind kind : kBothKinds) {
        fake::clearEvents();
        setUrl(state, "https://http://" + std::string(241, 'X'));
        run(kind);
        EXPECT_EQ(status(), 2);
        EXPECT_EQ(effects(), failureOf(kind));
        EXPECT_EQ(state.data, nullptr);
    }
}

TEST_F(WorkerTest, HostWithNothingBehindIt) {
    takeUrlsFromTheHost();
    for (const Kind kind : kBothKinds) {
        fake::clearEvents();
        setUrl(state, "camera");
        run(kind);
        EXPECT_EQ(status(), kind == Kind::Configuration ? 1 : 2);
        EXPECT_EQ(effects(), failureOf(kind));
    }
}

TEST_F(WorkerTest, HostAndPortOfItsOwn) {
    takeUrlsFromTheHost();
    for (const Kind kind : kBothKinds) {
        for (const std::string port : {"", ":8080"}) {
            fake::clearEvents();
            Saying server(goodReply(""));
            setUrl(state, "camera" + port + "/x");
            state.data_length = 9;
            run(kind);
            EXPECT_EQ(status(), 0);
            EXPECT_EQ(effects(), successOf(kind, "camera", port.empty() ? "443" : "8080"));
            EXPECT_EQ(server.received(), requestFor("/x"));
        }
        fake::clearEvents();
        setUrl(state, "camera:65536/x");
        run(kind);
        EXPECT_EQ(status(), 2);
        EXPECT_EQ(effects(), failureOf(kind));
    }
}

struct FailureRow {
    const char* name;
    std::string reply;
    std::int32_t dataLength;
    int decoded, unpacked, verdict, upgraded;
    std::vector<fake::Events> events;  // of the configuration worker, of the firmware worker, behind the connection
};

const FailureRow kFailures[] = {
    {"404", httpReply({"HTTP/1.1 404 Not Found", "Content-Length: 0"}), 9, 1, 0, 0, 0, {{}, {}}},
    {"a body", goodReply("firmware!"), 9, 1, 0, 0, 0, {{}, {}}},
    {"nothing to install", goodReply(""), 0, 1, 0, 0, 0, {{}, {}}},
    {"negative length to install", goodReply(""), -1, 1, 0, 0, 0, {{}, {}}},
    {"refused", goodReply(""), 9, 0, 0, 1, 0, {{"cfgAesDecode 9"}, {"VerifyFWCode 9"}}},
    {"not installed",
     goodReply(""),
     9,
     1,
     1,
     0,
     1,
     {{"cfgAesDecode 9", "unpackCFG 9"}, {kInstallFirmware.begin(), kInstallFirmware.begin() + 6}}},
};

TEST_F(WorkerTest, FailuresOfDownloadAndInstallation) {
    for (const Kind kind : kBothKinds) {
        for (const FailureRow& row : kFailures) {
            SCOPED_TRACE(std::string(nameOf(kind)) + ": " + row.name);
            fake::clearEvents();
            fake::Camera& camera = fake::camera();
            camera.decodeResult = row.decoded;
            camera.unpackResult = row.unpacked;
            camera.verifyResult = row.verdict;
            camera.upgradeResult = row.upgraded;
            Saying server(row.reply);
            setUrl(state, kGoodUrl);
            state.data_length = row.dataLength;
            run(kind);
            EXPECT_EQ(status(), 2);
            fake::Events expected = {"gethostbyname ttps", "connect 127.0.0.1:0"};
            for (const fake::Events& part : {row.events[kind == Kind::Configuration ? 0 : 1], failureOf(kind)}) {
                expected.insert(expected.end(), part.begin(), part.end());
            }
            EXPECT_EQ(effects(), expected);
            EXPECT_EQ(state.data_length, row.dataLength);
        }
    }
}

TEST_F(WorkerTest, RefusedFiveTimes) {
    for (const Kind kind : kBothKinds) {
        fake::clearEvents();
        NetworkPlan plan;
        plan.connectErrors = {111, 111, 111, 111, 111};
        planNetwork(plan);
        setUrl(state, kGoodUrl);
        run(kind);
        EXPECT_EQ(status(), 2);
        EXPECT_EQ(fake::eventsOf({"sleep"}), fake::Events(5, "sleep 1"));
        EXPECT_EQ(fake::eventsOf({"connect"}), fake::Events(5, "connect 127.0.0.1:0"));
        EXPECT_EQ(fake::eventsOf({"SIWriteInt"}), failureOf(kind));
    }
}

// A failed run leaves its body in the record; the next download takes its place.
TEST_F(WorkerTest, BodyStaysUntilTheNextDownload) {
    for (const Kind kind : kBothKinds) {
        setUrl(state, kGoodUrl);
        state.data_length = 9;
        {
            Saying server(goodReply("firmware!"));
            run(kind);
            EXPECT_EQ(status(), 2);
            ASSERT_NE(state.data, nullptr);
            EXPECT_EQ(std::string(reinterpret_cast<char*>(state.data), 9), "firmware!");
        }
        {
            Saying server(httpReply({"HTTP/1.1 404 Not Found"}));
            run(kind);
            EXPECT_EQ(std::string(reinterpret_cast<char*>(state.data), 9), "firmware!");
        }
        Saying server(goodReply(""));
        run(kind);
        EXPECT_EQ(status(), 0);
        EXPECT_EQ(state.data[0], 0);
    }
}

TEST_F(WorkerTest, StoppedBeforeItsFirstStep) {
    for (const Kind kind : kBothKinds) {
        fake::clearEvents();
        setUrl(state, "HTTPS://Camera/http://x");
        beforeWork([this] { stop_download_file(&state); });
        fake::onEvent("SIWriteInt 4 3", [this] { fake::record("busy " + std::to_string(busy())); });
        run(kind);
        EXPECT_EQ(status(), kind == Kind::Configuration ? 2 : 1);
        EXPECT_EQ(effects(), failureOf(kind));
        EXPECT_THAT(fake::eventsOf({"busy"}), testing::Each("busy 1"));
        EXPECT_STREQ(state.url, "HTTPS://Camera/http://x");
        EXPECT_EQ(state.stop_request, 1);
    }
}

// Seen from the event itself: in the worker's thread, or in the child that runs the command.
TEST_F(WorkerTest, StatusAndSlotChangeInOrder) {
    struct Row {
        Kind kind;
        std::string reply, event, seen;
    };
    const std::string reboot = "execv /bin/sh sh -c /var/reboot";
    const Row rows[] = {
        {Kind::Configuration, goodReply(""), "unpackCFG", "status 1 busy 1"},
        {Kind::Configuration, goodReply(""), reboot, "status 0 busy 1"},
        {Kind::Firmware, goodReply(""), "UpgradeFWCode", "status 1 busy 1"},
        {Kind::Firmware, goodReply(""), "SIWriteInt 4 2", "status 1 busy 1"},
        {Kind::Firmware, goodReply(""), reboot, "status 0 busy 1"},
        {Kind::Firmware, goodReply("body"), "SIWriteInt 4 3", "status 2 busy 1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(nameOf(row.kind)) + ": " + row.event);
        fake::clearEvents();
        Saying server(row.reply);
        setUrl(state, kGoodUrl);
        state.data_length = 9;
        fake::onEvent(row.event, [this] {
            fake::record("status " + std::to_string(status()) + " busy " + std::to_string(busy()));
        });
        run(row.kind);
        EXPECT_THAT(fake::eventsOf({"status"}), ElementsAre(row.seen));
    }
}

// What the main thread sees of a run, and what it may ask for meanwhile.
TEST_F(WorkerTest, BusyWhileItRuns) {
    for (const Kind kind : kBothKinds) {
        SCOPED_TRACE(nameOf(kind));
        resetThreads();
        std::atomic<bool> goOn = false;
        HttpServer server([&](Connection& connection) {
            connection.readRequest();
            waitUntil([&] { return goOn.load(); });
            connection.say(goodReply(""));
        });
        NetworkPlan plan;
        plan.leadTo = server.port();
        planNetwork(plan);
        setUrl(state, kGoodUrl);
        state.data_length = 9;
        ASSERT_EQ(start(state, kind), 0);
        ASSERT_TRUE(waitUntil([this] { return busy() == 1; }));
        EXPECT_EQ(status(), 1);
        ASSERT_TRUE(waitUntil([&] { return server.connections() == 1; }));
        EXPECT_EQ(start(state, Kind::Configuration), -1);
        EXPECT_EQ(start(state, Kind::Firmware), -1);
        EXPECT_EQ(threadsMade().size(), 1u);
        EXPECT_EQ(stop_download_file(&state), 0);  // too late: a run looks once, at its start
        goOn.store(true);
        ASSERT_TRUE(waitUntil([this] { return status() != 1; }));
        EXPECT_EQ(status(), 0);
        waitForEnd();
        EXPECT_EQ(server.connections(), 1u);
    }
}

// The main thread frees what a run has left as soon as its status says that it is over, as a shutdown does.
TEST_F(WorkerTest, DataIsTheMainThreadsAfterTheRun) {
    Saying server(goodReply(""));
    setUrl(state, kGoodUrl);
    state.data_length = 9;
    ASSERT_EQ(start(state, Kind::Configuration), 0);
    ASSERT_TRUE(waitUntil([this] { return busy() == 1 || threadsEnded() == 1; }));
    ASSERT_TRUE(waitUntil([this] { return status() == 0; }));
    EXPECT_EQ(state.data[0], 0);
    free(state.data);
    state.data = nullptr;
    waitForEnd();
}

TEST_F(WorkerTest, ControlOperations) {
    EXPECT_EQ(stop_download_file(nullptr), -1);
    EXPECT_EQ(get_download_file_status(nullptr), -1);
    EXPECT_EQ(get_download_file_status(&state), 0);
    EXPECT_EQ(stop_download_file(&state), 0);
    EXPECT_EQ(state.stop_request, 1);
    for (const std::int32_t value : {1, 2, -7}) {
        state.status = value;
        EXPECT_EQ(get_download_file_status(&state), value);
    }
    EXPECT_THAT(effects(), IsEmpty());
}

}  // namespace
}  // namespace worker
