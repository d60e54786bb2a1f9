#include "upgrade/network_calls.h"

#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdarg.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>

#include "fake_platform.h"
#include "parts.h"

namespace worker {
namespace {

constexpr long kMillisecond = 1000;

struct State {
    std::mutex mutex;
    std::condition_variable more;
    NetworkPlan plan;
    std::vector<Wait> waits;
    std::vector<Read> reads;
    std::size_t received = 0;
    int sends = 0;
};

State& state() {
    static State state;
    return state;
}

long microseconds(const timeval& time) { return static_cast<long>(time.tv_sec) * 1000000 + time.tv_usec; }

timeval timevalOf(long microseconds) { return {microseconds / 1000000, microseconds % 1000000}; }

int countIn(const fd_set& set) {
    int count = 0;
    for (int number = 0; number < FD_SETSIZE; ++number) count += FD_ISSET(number, &set) != 0 ? 1 : 0;
    return count;
}

// Writes the wait down; returns how it is to end, if not by itself.
const WaitEnds* noteWait(int count, const fd_set& set, const timeval& limit) {
    State& now = state();
    const std::lock_guard lock(now.mutex);
    now.waits.push_back({now.received, count, countIn(set), microseconds(limit)});
    const auto planned = now.plan.waits.find(now.received);
    return planned == now.plan.waits.end() ? nullptr : &planned->second;
}

int timeOut(fd_set* set, timeval* limit) {
    FD_ZERO(set);
    *limit = {};
    return 0;
}

std::string shown(const sockaddr_in& address) {
    char dotted[INET_ADDRSTRLEN];
    inet_ntop(AF_INET, &address.sin_addr, dotted, sizeof dotted);
    return std::string(dotted) + ":" + std::to_string(ntohs(address.sin_port));
}

// The errno this attempt is to fail with, 0: none.
int takeConnectError() {
    State& now = state();
    const std::lock_guard lock(now.mutex);
    if (now.plan.connectErrors.empty()) return 0;
    const int error = now.plan.connectErrors.front();
    now.plan.connectErrors.pop_front();
    return error;
}

NetworkPlan currentPlan() {
    const std::lock_guard lock(state().mutex);
    return state().plan;
}

// "nowhere" is unknown; "two.example" has two addresses; every other name is this machine's.
hostent* resolve(const std::string& name) {
    static thread_local std::uint8_t first[4], second[] = {127, 0, 0, 1};
    static thread_local char* addresses[3];
    static thread_local hostent host;
    if (name == "nowhere") return nullptr;
    const std::uint8_t octets[] = {127, 0, 0, static_cast<std::uint8_t>(name == "two.example" ? 2 : 1)};
    std::memcpy(first, octets, sizeof first);
    addresses[0] = reinterpret_cast<char*>(first);
    addresses[1] = name == "two.example" ? reinterpret_cast<char*>(second) : nullptr;
    addresses[2] = nullptr;
    host = {};
    host.h_addrtype = AF_INET;
    host.h_length = 4;
    host.h_addr_list = addresses;
    return &host;
}

}  // namespace

void planNetwork(const NetworkPlan& plan) {
    State& now = state();
    const std::lock_guard lock(now.mutex);
    now.plan = plan;
    now.waits.clear();
    now.reads.clear();
    now.received = 0;
    now.sends = 0;
}

std::vector<Wait> waits() {
    const std::lock_guard lock(state().mutex);
    return state().waits;
}

std::vector<Read> reads() {
    const std::lock_guard lock(state().mutex);
    return state().reads;
}

std::size_t bytesReceived() {
    const std::lock_guard lock(state().mutex);
    return state().received;
}

bool waitForReceived(std::size_t bytes) {
    std::unique_lock lock(state().mutex);
    return state().more.wait_for(lock, std::chrono::milliseconds(10), [=] { return state().received >= bytes; });
}

int sends() {
    const std::lock_guard lock(state().mutex);
    return state().sends;
}

}  // namespace worker

using namespace worker;

extern "C" {

int __real_connect(int socket, const sockaddr* address, socklen_t length);
int __real_fcntl(int descriptor, int command, ...);
int __real_select(int count, fd_set* readable, fd_set* writable, fd_set* except, timeval* limit);
ssize_t __real_recv(int socket, void* data, size_t room, int flags);
ssize_t __real_send(int socket, const void* data, size_t length, int flags);

// Non-blocking, but a test knows how it ends: what the kernel calls in progress is waited for.
static int connectNow(int socket, const sockaddr_in& address) {
    if (__real_connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return 0;
    if (errno != EINPROGRESS) return -1;
    pollfd polled{socket, POLLOUT, 0};
    poll(&polled, 1, -1);
    socklen_t length = sizeof errno;
    getsockopt(socket, SOL_SOCKET, SO_ERROR, &errno, &length);
    return errno == 0 ? 0 : -1;
}

hostent* __wrap_gethostbyname(const char* name) {
    fake::record(std::string("gethostbyname ") + name);
    return resolve(name);
}

int __wrap_connect(int socket, const sockaddr* address, socklen_t length) {
    sockaddr_in internet{};
    std::memcpy(&internet, address, length < sizeof internet ? length : sizeof internet);
    const bool blocks = (__real_fcntl(socket, F_GETFL) & O_NONBLOCK) == 0;
    const bool inherited = (__real_fcntl(socket, F_GETFD) & FD_CLOEXEC) == 0;
    fake::record("connect " + shown(internet) + (blocks ? " blocking" : "") + (inherited ? " inherited" : ""));
    const NetworkPlan plan = currentPlan();
    errno = takeConnectError();
    if (errno != 0) return -1;
    if (plan.leadTo != 0) internet.sin_port = htons(plan.leadTo);
    internet.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int result = connectNow(socket, internet);
    if (plan.shutAfterConnect) shutdown(socket, SHUT_WR);
    return result;
}

int __wrap_fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return fake::callFails("fcntl") ? -1 : __real_fcntl(descriptor, command, argument);
}

int __wrap_select(int count, fd_set* readable, fd_set* writable, fd_set* except, timeval* limit) {
    if (readable == nullptr || limit == nullptr) return __real_select(count, readable, writable, except, limit);
    const WaitEnds* end = noteWait(count, *readable, *limit);
    if (end != nullptr && *end == WaitEnds::InFailure) {
        errno = EINTR;
        return -1;
    }
    if (end != nullptr && *end == WaitEnds::InTimeOut) return timeOut(readable, limit);
    const long before = microseconds(*limit);
    const int result = __real_select(count, readable, writable, except, limit);
    if (end != nullptr) return timeOut(readable, limit);
    *limit = timevalOf(before > kMillisecond && result > 0 ? before - kMillisecond : 0);
    return result;
}

ssize_t __wrap_recv(int socket, void* data, size_t room, int flags) {
    const ssize_t length = __real_recv(socket, data, room, flags);
    const std::lock_guard lock(state().mutex);
    state().reads.push_back({room, static_cast<long>(length)});
    if (length > 0) state().received += static_cast<std::size_t>(length);
    state().more.notify_all();
    return length;
}

ssize_t __wrap_send(int socket, const void* data, size_t length, int flags) {
    int error = 0;
    {
        const std::lock_guard lock(state().mutex);
        ++state().sends;
        error = state().plan.sendError;
    }
    if (error == 0) return __real_send(socket, data, length, flags);
    errno = error;
    return -1;
}

}  // extern "C"
