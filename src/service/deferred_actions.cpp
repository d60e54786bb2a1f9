#include "service/deferred_actions.h"

#include <signal.h>
#include <stdint.h>
#include <string.h>

#include "camera/pending_actions.h"
#include "camera/request.h"
#include "platform.h"
#include "service/service_state.h"
#include "system/shell.h"
#include "util/date_time.h"

static void restartPppoe() { shell("/etc/init.d/pppoe.sh restart 2>/dev/null 1>/dev/null"); }

static void refreshSiteList() {
    memset(g_pSiteSurveyBuffer, 0, kSiteSurveyBufferSize);
    getSiteList(g_pSiteSurveyBuffer, kSiteSurveyBufferSize);
}

static void announceName() {
    shell("/etc/init.d/llmnr-0 restart 2>/dev/null 1>/dev/null");
    shell("/etc/init.d/bonjour-0 restart 2>/dev/null 1>/dev/null");
}

static void reloadAccounts() {
    signal(SIGUSR1, SIG_IGN);  // from here on, for good
    shell("/etc/init.d/rtmpd-0 stop 2>/dev/null 1>/dev/null");
    shell("/etc/init.d/rtspd-0 stop 2>/dev/null 1>/dev/null");
    shell("/etc/init.d/httpd-0 reload 2>/dev/null 1>/dev/null");
    shell("/etc/init.d/https-0 reload 2>/dev/null 1>/dev/null");
    shell("/etc/init.d/rtspd-0 start 2>/dev/null 1>/dev/null");
    shell("/etc/init.d/rtmpd-0 start 2>/dev/null 1>/dev/null");
}

static void resetWireless() { shell("/usr/sbin/msger httpdmgr 0 reset_wifi 0 0 2>/dev/null 1>/dev/null&"); }

static void restartWebServer() { shell("/usr/sbin/msger httpdmgr 0 hrestart 0 0 2>/dev/null 1>/dev/null"); }

static void restartNetwork() { shell("/etc/init.d/ipv4 restart 2>/dev/null 1>/dev/null"); }

static void applyDateTime() { reset_datetime(g_szDateTime); }

static void commit() {}  // the store is written through by every command

static void resetConfiguration() {
    shell("/etc/init.d/userconfig reset 1>/dev/null 2>/dev/null");
    g_nFactoryReset = 0;
    shell(kRebootCommand);
}

static void restartDevice() { shell(kRebootCommand); }

struct DeferredAction {
    int32_t* flag;
    void (*run)();
};

static constexpr DeferredAction kActions[] = {
    {&g_nPppoeRestart,    restartPppoe      },
    {&g_nInitSiteSurvey,  refreshSiteList   },
    {&g_nDeviceNameReset, announceName      },
    {&g_nAuthReset,       reloadAccounts    },
    {&g_nWifiReset,       resetWireless     },
    {&g_nWebServerReset,  restartWebServer  },
    {&g_nNetworkReset,    restartNetwork    },
    {&g_nResetTime,       applyDateTime     },
    {&g_nCommitSetting,   commit            },
    {&g_nFactoryReset,    resetConfiguration},
    {&g_nReboot,          restartDevice     },
};

void runDeferredActions() {
    for (const DeferredAction& action : kActions) {
        if (*action.flag == 0) continue;
        beginRequest();  // the actions before it ran commands
        action.run();
        requestTookLong = true;
        *action.flag = 0;
    }
}
