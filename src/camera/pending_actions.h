// What handlers ask for but must not do themselves: each flag is raised by a handler and taken by the service once the
// reply has left. Non-zero means pending.
#pragma once

#include <stdint.h>

extern int32_t g_nPppoeRestart;  // no command raises it
extern int32_t g_nInitSiteSurvey;
extern int32_t g_nDeviceNameReset;
extern int32_t g_nAuthReset;
extern int32_t g_nWifiReset;
extern int32_t g_nWebServerReset;
extern int32_t g_nNetworkReset;
extern int32_t g_nResetTime;
extern int32_t g_nCommitSetting;
extern int32_t g_nFactoryReset;
extern int32_t g_nReboot;

// The local time that goes with g_nResetTime, "YYYY/MM/DD hh:mm:ss"; empty: leave the clock alone.
extern char g_szDateTime[256];
