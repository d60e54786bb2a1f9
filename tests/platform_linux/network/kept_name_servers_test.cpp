// Name servers between requests: read once, and yet never older than the request.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>

#include "common/moved_clock.h"
#include "platform.h"
#include "support/child_process.h"
#include "support/file_calls.h"
#include "support/temporary_folder.h"

static constexpr char kFile[] = "/etc/resolv.conf";

// The last octets, 0 for none.
static std::pair<int, int> servers() {
    std::array<uint8_t, 4> first = {}, second = {};
    net_get_dns(first.data());
    net_get_dns2(second.data());
    return {first[3], second[3]};
}

static std::pair<int, int> serversInARequest() {
    requestBegins();
    return servers();
}

static int opensOfARequest() {
    int opens = 0;
    const CaughtFileCalls caught({.before = [&](const std::string& call) { opens += call.starts_with("open"); }});
    serversInARequest();
    return opens;
}

static void settle() {
    serversInARequest();
    moveClock(60);
    serversInARequest();
    EXPECT_EQ(opensOfARequest(), 0);
    awaitNextTick(kFile);
}

static void inPrivateEtc(const std::function<void()>& body) {
    const TemporaryFolder etc;
    writeFile(etc / "resolv.conf", "nameserver 192.0.2.1\nnameserver 192.0.2.2\n");
    if (!withPrivateEtc(etc.path(), body)) GTEST_SKIP() << "no private /etc on this machine";
}

using Pair = std::pair<int, int>;

TEST(KeptNameServers, AreReadOnceARequest) {
    inPrivateEtc([] {
        EXPECT_EQ(opensOfARequest(), 1);
        EXPECT_EQ(serversInARequest(), (Pair{1, 2}));
        writeFile(kFile, "nameserver 192.0.2.3\n");
        EXPECT_EQ(servers(), (Pair{1, 2}));
        EXPECT_EQ(serversInARequest(), (Pair{3, 0}));
    });
}

TEST(KeptNameServers, ChangeWithTheirFile) {
    inPrivateEtc([] {
        settle();
        writeFile(kFile, "nameserver 192.0.2.4\nnameserver 192.0.2.5\n");  // of the same size
        EXPECT_EQ(serversInARequest(), (Pair{4, 5}));
        settle();
        writeFile("/etc/resolv.new", "nameserver 192.0.2.6\nnameserver 192.0.2.7\n");
        std::filesystem::rename("/etc/resolv.new", kFile);
        EXPECT_EQ(serversInARequest(), (Pair{6, 7}));
        settle();
        std::filesystem::remove(kFile);
        EXPECT_EQ(serversInARequest(), (Pair{0, 0}));
        writeFile(kFile, "nameserver 192.0.2.8\n");
        EXPECT_EQ(serversInARequest(), (Pair{8, 0}));
    });
}

// Looked for in vain, and there a moment later when it is opened: what was read then is not kept.
TEST(KeptNameServers, OfAFileThatCameAndWentAreNone) {
    inPrivateEtc([] {
        serversInARequest();
        std::filesystem::remove(kFile);
        {
            const CaughtFileCalls caught({.before = [](const std::string& call) {
                if (call.starts_with("open")) writeFile(kFile, "nameserver 192.0.2.9\n");
            }});
            EXPECT_EQ(serversInARequest().first, 9);
        }
        std::filesystem::remove(kFile);
        EXPECT_EQ(serversInARequest(), (Pair{0, 0}));
    });
}

// A reading that fails for a moment is not what the file says.
TEST(KeptNameServers, AreReadAgainAfterAFailure) {
    inPrivateEtc([] {
        EXPECT_EQ(serversInARequest(), (Pair{1, 2}));
        moveClock(60);
        {
            const CaughtFileCalls caught({.failAt = 1, .error = EMFILE});
            EXPECT_EQ(serversInARequest().first, 0);
        }
        EXPECT_EQ(serversInARequest(), (Pair{1, 2}));
    });
}
