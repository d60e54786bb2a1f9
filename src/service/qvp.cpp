// The daemon: start-up, the receive loop, orderly shutdown.
#include <errno.h>
#include <malloc.h>
#include <signal.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "handlers/qvp_function.h"
#include "landap/landap_function.h"
#include "protocol/packet_header.h"
#include "service/pid_file.h"
#include "service/presence_report.h"
#include "service/receive_loop.h"
#include "service/service_socket.h"
#include "service/service_state.h"
#include "service/signals.h"
#include "service/usage.h"
#include "system/signal_window.h"
#include "system/standard_descriptors.h"
#include "system/trace.h"
#include "system/trace_output.h"
#include "upgrade/download_state.h"

static constexpr useconds_t kDrainMicroseconds = 200;

static uint8_t* g_pReceiveBuffer;
static uint8_t* g_pReplyBuffer;

// Leaves errno as it is.
static int fail(int line, const char* message) {
    const int reason = errno;
    traceService("main", line, "%s", message);
    errno = reason;
    return -1;
}

static int initFamilies(const char* interfaceName) {
    if (qvp_function_init(interfaceName) == -1) return fail(195, "qvp_function_init failed");
    if (landap_function_init(interfaceName) == -1) return fail(203, "landap_function_init failed");
    return 0;
}

static int prepareSocket(const char* interfaceName) {
    if (bindToInterface(g_nSocket, interfaceName) < 0) return fail(212, "setsockopt: SO_BINDTODEVICE failed");
    if (allowBroadcast(g_nSocket) < 0) return fail(220, "setsockopt: SO_BROADCAST failed");
    if (allowReuse(g_nSocket) < 0) return fail(228, "setsockopt: SO_REUSEADDR failed");
    if (bindToPort(g_nSocket) < 0) return fail(235, "bind failed");
    return 0;
}

// Where the C library can: gives blocks as large as the site survey's pages of their own, which take no memory before
// there is a list in them.
static void setLargeBlocksApart() {
#ifdef M_MMAP_THRESHOLD
    mallopt(M_TOP_PAD, 0);
    mallopt(M_MMAP_THRESHOLD, kSiteSurveyBufferSize);
#endif
}

static int allocateBuffers() {
    g_pReceiveBuffer = static_cast<uint8_t*>(malloc(kDatagramSize));
    if (g_pReceiveBuffer == nullptr) return fail(245, "allocate recv buffer  failed");
    g_pReplyBuffer = static_cast<uint8_t*>(malloc(kDatagramSize));
    if (g_pReplyBuffer == nullptr) return fail(254, "allocate reply buffer  failed");
    g_pGeneralReportBuffer = static_cast<uint8_t*>(malloc(kReportBufferSize));
    if (g_pGeneralReportBuffer == nullptr) return fail(268, "allocate general report buffer  failed");
    g_pSiteSurveyBuffer = static_cast<char*>(calloc(1, kSiteSurveyBufferSize));
    if (g_pSiteSurveyBuffer == nullptr) return fail(287, "allocate sitesurvey buffer  failed");
    return 0;
}

static void freeBuffers() {
    free(g_pReceiveBuffer);
    free(g_pReplyBuffer);
    free(g_pGeneralReportBuffer);
    free(g_pSiteSurveyBuffer);
    g_pReceiveBuffer = nullptr;
    g_pReplyBuffer = nullptr;
    g_pGeneralReportBuffer = nullptr;
    g_pSiteSurveyBuffer = nullptr;
}

static int openService(const char* interfaceName) {
    setLargeBlocksApart();
    g_nSocket = openSocket();
    if (g_nSocket < 0) return fail(183, "create socket failed");
    if (initFamilies(interfaceName) != 0) return -1;
    if (prepareSocket(interfaceName) != 0) return -1;
    return allocateBuffers();
}

static void closeService(const char* interfaceName) {
    if (g_nSocket >= 0) close(g_nSocket);
    g_nSocket = -1;
    freeBuffers();
    removePidFile(interfaceName);
}

static void drainWorker() {
    stop_download_file(&g_stDownThread);
    while (get_download_file_status(&g_stDownThread) != 0) usleep(kDrainMicroseconds);
    free(g_stDownThread.data);
    g_stDownThread.data = nullptr;
    g_stDownThread.data_length = 0;
}

static void serveUntilStopped(const char* interfaceName) {
    traceService("main", 312, "QVP Client Start with interface:[%s]", interfaceName);
    sendPresenceReport(SIGALRM);
    armPresenceTimer();
    runReceiveLoop(g_pReceiveBuffer, g_pReplyBuffer);
    disarmPresenceTimer();
}

int main(int argc, char* argv[]) {
    if (argc != 2) return fail(165, "Invalid parameter");
    if (tellAbout(argv[1])) return 0;
    const char* interfaceName = argv[1];
    openStandardDescriptors();
    openTraceOutput();
    blockSignals();
    if (takePidFile(interfaceName) != 0) return -1;
    memset(&g_stDownThread, 0, sizeof g_stDownThread);
    installSignalHandlers();
    if (openService(interfaceName) != 0) {
        trace("qvp(%s) cannot start: %s\n", interfaceName, strerror(errno));
        closeService(interfaceName);
        return -1;
    }
    serveUntilStopped(interfaceName);
    drainWorker();
    closeService(interfaceName);
    traceService("main", 744, "QVP Client Stop");
    return 0;
}
