// The worker's own network calls, caught at link time: names never leave the test program, connections only ever reach
// 127.0.0.1, and waits end the way a test wants. Calls with their arguments stand in the fake platform's log:
//   gethostbyname camera        connect 127.0.0.1:443  (with what the socket lacks, if anything, behind it)
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <vector>

namespace worker {

// How a wait ends once so many bytes have been received.
enum class WaitEnds {
    InTimeOut,          // nothing comes any more
    InTimeOutTooEarly,  // something comes between the time-out and the read behind it
    InFailure,
};

struct NetworkPlan {
    std::uint16_t leadTo = 0;       // every connection goes to this port; 0: to the port it was to go to
    std::deque<int> connectErrors;  // what the next attempts fail with
    bool shutAfterConnect = false;  // the socket can send no more: EPIPE, and SIGPIPE for who does not mind
    int sendError = 0;
    std::map<std::size_t, WaitEnds> waits;
};

// Takes effect at once; forgets all that was recorded.
void planNetwork(const NetworkPlan& plan);

// One select(). A successful one leaves a millisecond less in its limit than it found there.
struct Wait {
    std::size_t received;  // bytes before it
    int count;             // of descriptors
    int inSet;             // descriptors in its set
    long microseconds;     // its limit
};

// One recv().
struct Read {
    std::size_t wanted;
    long got;
};

std::vector<Wait> waits();
std::vector<Read> reads();
std::size_t bytesReceived();

// Waits until so many bytes have been received, 10 ms at most; says whether they have.
bool waitForReceived(std::size_t bytes);

int sends();

}  // namespace worker
