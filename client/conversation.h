// Asking one camera: a request, sent again with the same sequence until its answer comes.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "client/link.h"
#include "client/request.h"

namespace client {

// Where a camera is found.
struct Target {
    Mac mac;
    Ipv4 address;           // 0.0.0.0: not known
    Interface interface;    // of this machine, where it is heard
    bool isShared = false;  // another camera has that address too: only what goes to everybody reaches this one
};

struct Patience {
    std::chrono::milliseconds wait{2000};  // for each try
    int tries = 3;
};

// A reply, from its header on, as long as its command's is.
using Reply = std::vector<uint8_t>;

class Conversation {
public:
    // `note` is told what is odd but no error, in a sentence.
    Conversation(Link& link, Family family, Target target, Patience patience,
                 std::function<void(const std::string&)> note);

    const Target& target() const { return target_; }

    // From here on the camera is thought to be at that address; if it is a new one, alone.
    void moveTo(Ipv4 address);
    Family family() const { return family_; }

    // Sends a request and returns its reply. `request` begins with room for the header, which is filled in here. The
    // first try goes to the camera's address where that is near, the others to everybody: a camera that is not where it
    // was thought to be still hears them. Nothing when no answer came.
    std::optional<Reply> ask(uint16_t opcode, std::vector<uint8_t> request, size_t replyLength);

private:
    void send(std::span<const uint8_t> request, int attempt);
    std::optional<Reply> awaitReply(const PacketHeader& header, size_t replyLength);
    void noteSender(const Incoming& reply);

    Link& link_;
    Family family_;
    Target target_;
    Patience patience_;
    std::function<void(const std::string&)> note_;
};

}  // namespace client
