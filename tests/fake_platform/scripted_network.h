// The network of a whole daemon run inside a test program: what comes in is a script, what goes out is recorded.
//
// While scripted, socket makes a real but idle socket; setsockopt, bind, sendto and recvfrom never reach the system;
// and the wait for a datagram (pselect) takes the script's next step. Past the script's end it delivers SIGTERM.
// Events:
//   socket AF_INET SOCK_DGRAM IPPROTO_UDP close-on-exec
//   setsockopt SOL_SOCKET SO_BROADCAST 4 1    bind 0.0.0.0:62976    close socket    malloc 1024 #1    free #1
//   wait, recvfrom 1024                       with what is wrong about the call behind it, if anything
//   sendto 192.168.0.100:5000 38 EEFE01…
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace fake {

using Bytes = std::vector<std::uint8_t>;

void scriptNetwork();

// The next wait returns with a datagram from 192.168.0.100, this port.
void deliver(const Bytes& datagram, std::uint16_t port = 5000);

// The next wait is interrupted by a signal sent to the daemon while it waits.
void deliverSignal(int signal);

// The next wait fails with this errno.
void failWait(int error);

// The next wait says that nothing is there, or that something is there which recvfrom then fails to get.
void wakeForNothing();
void failReceive(int error);

// Runs just before the next wait opens, in the daemon's process: a signal that it raises is pending when the wait
// starts, and stays so when the wait returns with a datagram.
void beforeWait(std::function<void()> action);

// Forgets what is left of the script, of armed failures and of onEvent: what a child process did of it, it did in its
// own memory.
void clearScript();

struct Sent {
    std::string to;  // address:port
    Bytes bytes;
};

// The datagrams sent, read back from the log.
std::vector<Sent> sent();
std::vector<Sent> sentTo(const std::string& receiver);

// Where /var/run/ really is.
std::string runFolder();

}  // namespace fake
