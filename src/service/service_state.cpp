#include "service/service_state.h"

volatile sig_atomic_t g_nStopRunning;
int32_t g_nSocket = -1;
uint8_t* g_pGeneralReportBuffer;
char* g_pSiteSurveyBuffer;
