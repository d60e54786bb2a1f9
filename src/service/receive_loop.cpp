#include "service/receive_loop.h"

#include <errno.h>
#include <netinet/in.h>
#include <stddef.h>
#include <string.h>
#include <sys/select.h>
#include <sys/socket.h>

#include "camera/request.h"
#include "protocol/opcodes.h"
#include "protocol/packet_header.h"
#include "service/deferred_actions.h"
#include "service/dispatch.h"
#include "service/service_state.h"
#include "system/signal_window.h"
#include "system/trace.h"
#include "util/command.h"
#include "util/packet.h"

static constexpr int kCapacity = kDatagramSize;

// Where the last datagram came from.
struct Sender {
    sockaddr_in address;
    socklen_t length;
};

static void sendReply(const uint8_t* reply, int length, const Sender& sender) {
    sendto(g_nSocket, reply, static_cast<size_t>(length), 0, reinterpret_cast<const sockaddr*>(&sender.address),
           sizeof sender.address);
}

// The list has its own sequence of replies; a refusal is one ordinary reply.
static void serveSiteSurvey(const FamilyDispatch& family, const uint8_t* request, uint8_t* reply,
                            const Sender& sender) {
    int accepted = 0;
    memset(reply, 0, kDatagramSize);
    int length = family.checkSiteSurvey(request, reply, kCapacity, &accepted);
    if (length <= 0) return;
    if (accepted == 0) return sendReply(reply, length, sender);
    if (accepted != 1) return;
    for (int page = 0;; page++) {
        length = family.fillSiteSurvey(request, reply, kCapacity, page, g_pSiteSurveyBuffer, kSiteSurveyBufferSize);
        if (length <= 0 && page > 0) return;
        sendReply(reply, length, sender);  // with nothing on page 0: an empty datagram, or a send that fails
        if (length <= 0) return;
    }
}

static void serveCommand(Handler* handler, const uint8_t* request, uint8_t* reply, const Sender& sender) {
    if (handler == nullptr) return;
    memset(reply, 0, kDatagramSize);
    int length = handler(request, reply, kCapacity);
    if (length <= 0) return;
    sendReply(reply, length, sender);
    runDeferredActions();
}

static void traceSender(in_addr address) {
    uint8_t octets[4];
    memcpy(octets, &address, sizeof octets);
    traceWords("[QVP][qvp][main][Line: 343]: QVP Client receive command from [", octets[0], ".", octets[1], ".",
               octets[2], ".", octets[3], "]\n");
}

static void serveDatagram(uint8_t* received, uint8_t* reply, Sender& sender) {
    memset(received, 0, kDatagramSize);
    ssize_t length =
        recvfrom(g_nSocket, received, kDatagramSize, 0, reinterpret_cast<sockaddr*>(&sender.address), &sender.length);
    // Unsigned, so a failed receive passes; its zeroed buffer names no family.
    if (static_cast<size_t>(length) < sizeof(PacketHeader)) return;
    beginRequest();
    traceSender(sender.address.sin_addr);
    const PacketHeader& header = view<PacketHeader>(static_cast<const uint8_t*>(received));
    const FamilyDispatch* family = findFamily(load(header.protocol));
    if (family == nullptr) return;
    uint16_t code = load(header.opcode);
    if (code == opcode::kSiteSurvey) return serveSiteSurvey(*family, received, reply, sender);
    serveCommand(family->find(code), received, reply, sender);
}

// pselect lets no signal through when the socket is readable at once, so in a flood the window opens by itself now and
// then, and behind every scan, write or command: it must not hold up a stop.
static void letSignalsThrough() {
    constexpr unsigned kDatagramsBetween = 16;
    static unsigned datagrams;
    if (++datagrams % kDatagramsBetween != 0 && !requestTookLong) return;
    requestTookLong = false;
    openSignalWindow();
    closeSignalWindow();
}

// Waits with the signal window open. Returns what pselect does, and whether the socket is readable.
static int waitForDatagram(bool& readable) {
    fd_set sockets;
    FD_ZERO(&sockets);
    FD_SET(g_nSocket, &sockets);
    int result = pselect(g_nSocket + 1, &sockets, nullptr, nullptr, nullptr, windowSignalMask());
    int reason = errno;
    readable = result > 0 && FD_ISSET(g_nSocket, &sockets);
    letSignalsThrough();
    errno = reason;
    return result;
}

void runReceiveLoop(uint8_t* received, uint8_t* reply) {
    Sender sender = {};
    sender.length = sizeof sender.address;
    while (!g_nStopRunning) {
        bool readable = false;
        if (waitForDatagram(readable) < 0) {
            if (errno == EINTR) continue;
            traceService("main", 329, "select has some problem");
            return;
        }
        if (readable) serveDatagram(received, reply, sender);
    }
}
