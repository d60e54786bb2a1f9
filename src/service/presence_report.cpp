#include "service/presence_report.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netinet/in.h>
#include <stddef.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>

#include "camera/device.h"
#include "camera/request.h"
#include "camera/settings.h"
#include "platform.h"
#include "protocol/opcodes.h"
#include "protocol/packet_header.h"
#include "protocol/presence_report.h"
#include "service/interface_binding.h"
#include "service/service_state.h"
#include "system/signal_window.h"
#include "util/command.h"
#include "util/packet.h"
#include "util/reply_fields.h"

static constexpr int kIntervalSeconds = 30;
static constexpr char kName[] = "general_report";

static uint16_t g_nReportCounter;

static void fillHeader(PacketHeader& header) {
    memcpy(header.magic, kPresenceMagic, sizeof header.magic);
    header.sequence = le16(g_nReportCounter);
    header.opcode = le16(opcode::kPresenceReport);
    memcpy(header.mac.bytes, g_uDeviceMac, sizeof header.mac);
    header.address = interfaceAddress();
    header.protocol = le16(kPrimaryProtocol);
    header.payload_length = le16(sizeof(PresenceReport) - sizeof header);
}

int general_report(uint8_t* buffer, int capacity) {
    traceHandler(kPrimary, kName, __LINE__);
    if (capacity < static_cast<int>(sizeof(PresenceReport))) {
        traceHandler(kPrimary, kName, __LINE__);
        return -1;
    }
    PresenceReport& out = view<PresenceReport>(buffer);
    fillHeader(out.header);
    putStoredText(out.product, kProduct);
    putText(out.fixed_86, "3");
    putFirmwareVersion(out.firmware);
    read(kBuild);  // asked for by custom, sent nowhere
    memcpy(out.mac.bytes, g_uDeviceMac, sizeof out.mac);
    putStoredText(out.hardware, kHardwareVersion);
    putStoredText(out.name, kCameraName);
    out.address = interfaceAddress();
    net_get_netmask(g_szInterfaceName, out.mask.bytes);
    g_nReportCounter++;
    return sizeof(PresenceReport);
}

static void broadcast(const uint8_t* report, int length) {
    sockaddr_in everyone = {};
    everyone.sin_family = AF_INET;
    everyone.sin_port = htons(kPort);
    everyone.sin_addr.s_addr = inet_addr("255.255.255.255");
    sendto(g_nSocket, report, static_cast<size_t>(length), 0, reinterpret_cast<const sockaddr*>(&everyone),
           sizeof everyone);
}

void sendPresenceReport(int) {
    if (g_nStopRunning || g_nSocket == -1) return;
    int interrupted = errno;
    closeSignalWindow();  // to the end of the handler: nothing interrupts its store accesses either
    beginRequest();
    keepBoundToInterface();
    memset(g_pGeneralReportBuffer, 0, kReportBufferSize);
    int length = general_report(g_pGeneralReportBuffer, kReportBufferSize);
    if (length >= 1) broadcast(g_pGeneralReportBuffer, length);
    errno = interrupted;
}

static void setTimer(int seconds) {
    itimerval timer = {};
    timer.it_interval.tv_sec = seconds;
    timer.it_value.tv_sec = seconds;
    setitimer(ITIMER_REAL, &timer, nullptr);
}

void armPresenceTimer() { setTimer(kIntervalSeconds); }
void disarmPresenceTimer() { setTimer(0); }
