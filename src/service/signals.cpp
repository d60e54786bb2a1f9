#include "service/signals.h"

#include <errno.h>
#include <signal.h>

#include "service/presence_report.h"
#include "service/service_state.h"
#include "system/signal_window.h"
#include "system/trace.h"

static constexpr char kName[] = "signal_handler";

// SIGPIPE and SIGXFSZ, so that neither a closed trace pipe nor a file that may not grow ends the daemon.
static constexpr int kIgnored[] = {SIGHUP, SIGABRT, SIGUSR2, SIGCHLD, SIGTSTP, SIGTTIN, SIGTTOU, SIGPIPE, SIGXFSZ};
static constexpr int kHandled[] = {SIGINT, SIGQUIT, SIGTERM, SIGUSR1};

void signal_handler(int number) {
    closeSignalWindow();  // to the end of the handler: one after the other, not one inside the other
    int interrupted = errno;
    trace("[QVP][qvp][%s][Line: 74] signal:[%d]\n", kName, number);
    switch (number) {
        case SIGHUP:  // ignored at start-up: never delivered
            trace("[QVP][QVP_CLIENT][qvp][%s][Line: 78]: Hanged up\n", kName);
            g_nStopRunning = 1;
            break;
        case SIGINT:
            traceService(kName, 82, "Interrupted");
            g_nStopRunning = 1;
            break;
        case SIGTERM:
            traceService(kName, 86, "Terminated");
            g_nStopRunning = 1;
            break;
        default:
            traceService(kName, 90, "Ignore signal");
            break;
    }
    errno = interrupted;
}

static void install(int number, void (*handler)(int), int flags) {
    struct sigaction action = {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(number, &action, nullptr);
}

void installSignalHandlers() {
    for (int number : kIgnored) install(number, SIG_IGN, 0);
    for (int number : kHandled) install(number, signal_handler, SA_RESTART | SA_NODEFER | SA_NOCLDWAIT);
    signal(SIGALRM, sendPresenceReport);
}
