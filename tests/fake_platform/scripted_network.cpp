#include "scripted_network.h"

#include <errno.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/select.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <sstream>
#include <utility>

#include "event_log.h"
#include "fake_platform.h"
#include "parts.h"
#include "socket_calls.h"

namespace fake {
namespace {

// One wait: what happens before it opens, then how it ends.
struct Step {
    std::function<void()> before;
    int signal = 0;
    int error = 0;
    bool ready = false;
    Arrival arrival;
};

struct Script {
    bool active = false;
    std::deque<Step> steps;
    std::function<void()> before;  // of the step that comes next
    int stops = 0;                 // asked for past the script's end
    Arrival arrived;
};

Script g_script;

constexpr int kDaemonSignals[] = {SIGALRM, SIGINT, SIGQUIT, SIGTERM, SIGUSR1};

// One of the signals waits to be delivered and the mask lets it through.
bool signalIsDue(const sigset_t& mask) {
    sigset_t pending;
    sigpending(&pending);
    return std::any_of(std::begin(kDaemonSignals), std::end(kDaemonSignals), [&](int number) {
        return sigismember(&pending, number) == 1 && sigismember(&mask, number) == 0;
    });
}

void openWindow(const sigset_t& mask) {
    sigset_t closed;
    sigprocmask(SIG_SETMASK, &mask, &closed);
    sigprocmask(SIG_SETMASK, &closed, nullptr);
}

int failWith(int error) {
    errno = error;
    return -1;
}

std::string wrongAbout(int count, fd_set* readable, fd_set* writable, fd_set* except, const timespec* limit,
                       const sigset_t* mask) {
    std::string wrong;
    const int socket = scriptedSocket();
    if (count != socket + 1) wrong += " descriptor-count";
    for (int number = 0; readable != nullptr && number < count; ++number) {
        if ((FD_ISSET(number, readable) != 0) != (number == socket)) wrong += " read-set";
    }
    if (readable == nullptr) wrong += " no-read-set";
    if (writable != nullptr || except != nullptr) wrong += " other-set";
    if (limit != nullptr) wrong += " time-limit";
    if (mask == nullptr) wrong += " no-mask";
    return wrong;
}

Step& nextStep() {
    if (g_script.steps.empty()) {
        if (++g_script.stops > 3) {
            std::fprintf(stderr, "the daemon does not stop\n");
            std::abort();
        }
        Step stop;
        stop.signal = SIGTERM;
        stop.before = std::exchange(g_script.before, nullptr);
        g_script.steps.push_back(std::move(stop));
    }
    return g_script.steps.front();
}

int interrupt(const sigset_t& mask) {
    openWindow(mask);
    return failWith(EINTR);
}

int take(const Step& step, fd_set* readable, const sigset_t& mask) {
    if (step.signal != 0) {
        raise(step.signal);
        if (signalIsDue(mask)) return interrupt(mask);
    }
    if (step.error != 0) return failWith(step.error);
    if (!step.ready) {
        FD_ZERO(readable);
        return 0;
    }
    g_script.arrived = step.arrival;
    return 1;
}

void addStep(Step step) {
    step.before = std::exchange(g_script.before, nullptr);
    g_script.steps.push_back(std::move(step));
}

std::uint8_t hexByte(const std::string& text, std::size_t at) {
    return static_cast<std::uint8_t>(std::stoul(text.substr(at, 2), nullptr, 16));
}

}  // namespace

void scriptNetwork() { g_script.active = true; }

bool networkIsScripted() { return g_script.active; }

void resetScript() {
    g_script = {};
    forgetSocket();
}

Arrival takeArrival() { return std::exchange(g_script.arrived, {}); }

void deliver(const Bytes& datagram, std::uint16_t port) {
    Step step;
    step.ready = true;
    step.arrival = {datagram, port, 0};
    addStep(std::move(step));
}

void deliverSignal(int signal) {
    Step step;
    step.signal = signal;
    addStep(std::move(step));
}

void failWait(int error) {
    Step step;
    step.error = error;
    addStep(std::move(step));
}

void wakeForNothing() { addStep({}); }

void failReceive(int error) {
    Step step;
    step.ready = true;
    step.arrival = {{}, 0, error};
    addStep(std::move(step));
}

void beforeWait(std::function<void()> action) { g_script.before = std::move(action); }

void clearScript() {
    resetScript();
    resetFailures();
    resetActions();
}

std::vector<Sent> sent() {
    std::vector<Sent> datagrams;
    for (const std::string& event : eventsOf({"sendto"})) {
        std::istringstream words(event);
        std::string function, length, hex;
        Sent datagram;
        words >> function >> datagram.to >> length >> hex;
        for (std::size_t at = 0; at + 1 < hex.size(); at += 2) datagram.bytes.push_back(hexByte(hex, at));
        datagrams.push_back(std::move(datagram));
    }
    return datagrams;
}

std::vector<Sent> sentTo(const std::string& receiver) {
    std::vector<Sent> datagrams = sent();
    std::erase_if(datagrams, [&](const Sent& datagram) { return datagram.to != receiver; });
    return datagrams;
}

}  // namespace fake

using namespace fake;

extern "C" {

int __real_pselect(int count, fd_set* readable, fd_set* writable, fd_set* except, const timespec* limit,
                   const sigset_t* mask);

int __wrap_pselect(int count, fd_set* readable, fd_set* writable, fd_set* except, const timespec* limit,
                   const sigset_t* mask) {
    if (!networkIsScripted()) return __real_pselect(count, readable, writable, except, limit, mask);
    appendEvent("wait" + wrongAbout(count, readable, writable, except, limit, mask));
    if (readable == nullptr || mask == nullptr) std::abort();
    Step& step = nextStep();
    if (step.before != nullptr) std::exchange(step.before, nullptr)();
    // As the kernel has it: nothing is delivered by a wait that finds its descriptor ready at once.
    if (!step.ready && signalIsDue(*mask)) return interrupt(*mask);  // the step comes with the wait after this one
    const Step taken = std::move(step);
    g_script.steps.pop_front();
    return take(taken, readable, *mask);
}

}  // extern "C"
