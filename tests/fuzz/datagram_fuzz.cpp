// Datagrams to the daemon's receive loop, in both families, from a camera with whatever store.
//
// An input is a sequence of records: a byte what it is, two bytes its length, least first, and so many bytes of it.
#include <errno.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "fuzz/camera.h"
#include "fuzz/outlets.h"
#include "fuzz/reply_rules.h"
#include "handlers/qvp_function.h"
#include "service/receive_loop.h"
#include "service/service_state.h"

using namespace fuzz;

enum Kind : uint8_t { kDatagram, kSiteList, kAddress, kRegion, kGroup, kTime, kUpgradeState, kFirstKey = 16 };

constexpr size_t kBufferSize = 1024;
constexpr int kSocket = 5;

// On the heap, so that a byte behind its end is seen.
struct Buffers {
    std::unique_ptr<uint8_t[]> request{new uint8_t[kBufferSize]};
    std::unique_ptr<uint8_t[]> reply{new uint8_t[kBufferSize]};
    std::unique_ptr<char[]> sites{new char[kSiteSurveyBufferSize]()};
};

static Buffers g_buffers;
static std::optional<std::string_view> g_arriving;
static Login g_login;

static void serve(std::string_view datagram) {
    camera().writes = 0;
    g_login = {storedText("USER_ADMIN", "Username1"), storedText("USER_ADMIN", "Password1")};
    g_arriving = datagram;
    g_nStopRunning = 0;
    runReceiveLoop(g_buffers.request.get(), g_buffers.reply.get());
    require(camera().openLists == 0, "lists are given back");
}

static int64_t numberOf(std::string_view bytes) {
    int64_t number = 0;
    for (size_t i = bytes.size(); i > 0; i--) number = number * 256 + static_cast<uint8_t>(bytes[i - 1]);
    return number;
}

static void take(uint8_t kind, std::string_view bytes) {
    if (kind >= kFirstKey && kind - size_t{kFirstKey} < keyCount()) return store(kind - size_t{kFirstKey}, bytes);
    switch (kind) {
        case kDatagram:
            return serve(bytes);
        case kSiteList:
            camera().siteList = bytes;
            return;
        case kAddress:
            camera().address.emplace();
            bytes.copy(reinterpret_cast<char*>(camera().address->data()), 4);
            return;
        case kRegion:
            camera().region = static_cast<int>(numberOf(bytes.substr(0, 4)));
            return;
        case kGroup:
            camera().group = bytes;
            return;
        case kTime:
            return setTime(numberOf(bytes.substr(0, 5)) - (int64_t{1} << 38));
        case kUpgradeState:
            camera().upgradeState = static_cast<int>(numberOf(bytes.substr(0, 4)));
            return;
        default:
            return;
    }
}

static void start() {
    setenv("TZ", "UTC0", 1);
    setTime(1'700'000'000);
    makeCamera();
    qvp_function_init("eth0");
    g_nSocket = kSocket;
    g_pSiteSurveyBuffer = g_buffers.sites.get();
    std::memset(g_pSiteSurveyBuffer, 0, kSiteSurveyBufferSize);
}

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    start();
    Input input(bytes, size);
    while (!input.isEmpty()) {
        const uint8_t kind = input.byte();
        const size_t length = input.byte();
        take(kind, input.text(length + input.byte() * size_t{256}));
    }
    return 0;
}

extern "C" {

// One datagram, then a stop.
int __wrap_pselect(int, fd_set*, fd_set*, fd_set*, const timespec*, const sigset_t*) {
    if (g_arriving) return 1;
    g_nStopRunning = 1;
    errno = EINTR;
    return -1;
}

ssize_t __wrap_recvfrom(int, void* buffer, size_t room, int, sockaddr*, socklen_t*) {
    const size_t length = g_arriving->copy(static_cast<char*>(buffer), room);
    g_arriving.reset();
    return static_cast<ssize_t>(length);
}

ssize_t __wrap_sendto(int, const void* bytes, size_t length, int, const sockaddr*, socklen_t) {
    const std::span request(g_buffers.request.get(), kBufferSize);
    const bool isNoList = request[4] == 0xAE && request[5] == 0 && length == static_cast<size_t>(-1);
    if (isNoList) return -1;
    require(length <= kBufferSize && bytes == g_buffers.reply.get(), "a reply stands in its buffer");
    const std::span reply(g_buffers.reply.get(), kBufferSize);
    const auto isZero = [](uint8_t byte) { return byte == 0; };
    require(std::ranges::all_of(reply.subspan(length), isZero), "nothing is written behind a reply");
    checkReply(request, reply.first(length), g_login);
    return static_cast<ssize_t>(length);
}

}  // extern "C"
