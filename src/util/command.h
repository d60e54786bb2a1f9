// What every command has in common, once: the two families, and the steps that open each handler.
#pragma once

#include <stdint.h>

// One of the two command families that share the port and the header.
struct Family {
    uint16_t protocol;        // the header's `protocol`
    const char* tracePrefix;  // of its trace lines
    const char* source;       // source file in its trace lines
    const char* namePrefix;   // in front of a command's name in its trace lines
};

constexpr Family kPrimary{2, "QVP", "qvp_function", ""};
constexpr Family kLandap{1, "landap", "landap_function", "landap_"};

enum class Addressing : uint8_t {
    MacOnly,         // the request names this device's MAC, whatever its `status`
    MacOrBroadcast,  // `status` 0x7777: this device's MAC; 0: this device's MAC or the broadcast form
};

enum class Protection : uint8_t {
    Open,
    Protected,             // wrong credentials: `status` 3 and a zero payload
    ProtectedWithPayload,  // the same, for requests whose `payload_length` is not 0
};

// A row a command. `work` fills the payload of a reply whose header stands and whose request has passed all checks.
struct Command {
    const char* name;  // as it is traced, behind the family's prefix
    Addressing addressing;
    Protection protection;
    int replyLength;
    void (*work)(const uint8_t* request, uint8_t* reply);
};

// Serves one request of at least 22 bytes in a 1024-byte buffer, zero behind its end. `reply` is zeroed and has room
// for `capacity` bytes. Returns the reply's length, or -1: send nothing.
int serve(const Family& family, const Command& command, const uint8_t* request, uint8_t* reply, int capacity);

// The trace line of handlers: no message, the line number tells where.
void traceHandler(const Family& family, const char* command, int line);
