// What every command has in common, once: the two families, and the steps that open each handler.
#pragma once

#include <stdint.h>

#include "protocol/packet_header.h"

// One of the two command families that share the port and the header.
struct Family {
    uint16_t protocol;       // the header's `protocol`
    const char* traceStart;  // what stands in front of a command's name in its trace lines
};

constexpr Family kPrimary{kPrimaryProtocol, "[QVP][qvp_function]["};
constexpr Family kLandap{kLandapProtocol, "[landap][landap_function][landap_"};

enum class Addressing : uint8_t {
    MacOnly,         // the request names this device's MAC, whatever its `status`
    MacOrBroadcast,  // `status` 0x7777: this device's MAC; 0: this device's MAC or the broadcast form
};

enum class Protection : uint8_t {
    Open,
    Protected,           // wrong credentials: `status` 3 and a zero payload
    ProtectedIfPayload,  // the same for requests whose `payload_length` is not 0, open otherwise
};

// A row a command. `work` fills the payload of a reply whose header stands and whose request has passed all checks.
struct Command {
    const char* name;  // as it is traced, behind the family's prefix
    Addressing addressing;
    Protection protection;
    int replyLength;
    void (*work)(const uint8_t* request, uint8_t* reply);
};

// A command under its name, in one family. Takes a request of at least 22 bytes in a 1024-byte buffer (zero behind its
// end) and a zeroed reply buffer, and returns the reply's length, or -1: send nothing.
using Handler = int(const uint8_t* request, uint8_t* reply, int capacity);

// The two steps of the site list. The check sets *accepted to 1 when the list may be sent; then each call of the fill
// builds one page (-1: no such page) from the `size` bytes of the driver's list.
using SiteSurveyCheck = int(const uint8_t* request, uint8_t* reply, int capacity, int* accepted);
using SiteSurveyFill = int(const uint8_t* request, uint8_t* reply, int capacity, int page, const char* sites, int size);

// What every handler does.
int serve(const Family& family, const Command& command, const uint8_t* request, uint8_t* reply, int capacity);

// The trace line of handlers: no message, the line number tells where.
void traceHandler(const Family& family, const char* command, int line);
