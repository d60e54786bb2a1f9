#include "camera/pending_actions.h"

int32_t g_nPppoeRestart;
int32_t g_nInitSiteSurvey;
int32_t g_nDeviceNameReset;
int32_t g_nAuthReset;
int32_t g_nWifiReset;
int32_t g_nWebServerReset;
int32_t g_nNetworkReset;
int32_t g_nResetTime;
int32_t g_nCommitSetting;
int32_t g_nFactoryReset;
int32_t g_nReboot;

char g_szDateTime[256];
