#include "util/command.h"

#include <string.h>

#include "camera/device.h"
#include "protocol/credentials.h"
#include "system/trace.h"
#include "util/credentials.h"
#include "util/packet.h"
#include "util/validators.h"

void traceHandler(const Family& family, const char* command, int line) {
    traceWords(family.traceStart, command, "][Line: ", line, "]\n");
}

static bool namesThisDevice(const PacketHeader& header) {
    return checkMacAddress(header.mac.bytes, sizeof header.mac, g_uDeviceMac, sizeof g_uDeviceMac) == 0;
}

static bool isBroadcast(const PacketHeader& header) {
    constexpr uint8_t kEveryDevice[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    constexpr uint8_t kNoAddress[4] = {0, 0, 0, 0};
    return memcmp(header.address.bytes, kNoAddress, sizeof kNoAddress) == 0 &&
           memcmp(header.mac.bytes, kEveryDevice, sizeof kEveryDevice) == 0;
}

static bool isAddressedToUs(const Family& family, const Command& command, const PacketHeader& header) {
    uint16_t selector = command.addressing == Addressing::MacOnly ? kByMac : load(header.status);
    if (selector != kByMac && selector != kByMacOrBroadcast) return false;  // the one rejection without a trace
    if (selector == kByMacOrBroadcast && isBroadcast(header)) return true;
    if (namesThisDevice(header)) return true;
    if (selector == kByMac) {  // the two mismatches differ in their line
        traceHandler(family, command.name, __LINE__);
    } else {
        traceHandler(family, command.name, __LINE__);
    }
    return false;
}

static bool credentialsRequired(const Command& command, const PacketHeader& header) {
    if (command.protection == Protection::ProtectedIfPayload) return load(header.payload_length) != 0;
    return command.protection == Protection::Protected;
}

static bool credentialsAccepted(const uint8_t* request) {
    const Credentials& given = view<ProtectedRequest>(request).credentials;
    char user[sizeof given.user + 1];
    char password[sizeof given.password + 1];
    takeText(user, given.user);
    takeText(password, given.password);
    return checkAuthentication(user, password) == 0;
}

int serve(const Family& family, const Command& command, const uint8_t* request, uint8_t* reply, int capacity) {
    const PacketHeader& header = view<PacketHeader>(request);
    traceHandler(family, command.name, __LINE__);
    if (memcmp(header.magic, kRequestMagic, sizeof kRequestMagic) != 0) {
        traceHandler(family, command.name, __LINE__);
        return -1;
    }
    if (load(header.protocol) != family.protocol) {
        traceHandler(family, command.name, __LINE__);
        return -1;
    }
    if (!isAddressedToUs(family, command, header)) return -1;
    if (capacity < command.replyLength) return -1;
    fillReplyHeader(header, reply, command.replyLength);
    if (credentialsRequired(command, header) && !credentialsAccepted(request)) {
        setStatus(reply, kNotLogin);
        return command.replyLength;
    }
    command.work(request, reply);
    return command.replyLength;
}
