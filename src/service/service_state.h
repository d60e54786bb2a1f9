// What the service owns for its whole life.
#pragma once

#include <signal.h>
#include <stdint.h>

constexpr int kReportBufferSize = 1024;
constexpr int kSiteSurveyBufferSize = 21844;

extern volatile sig_atomic_t g_nStopRunning;  // 1 once a stop was asked for
extern int32_t g_nSocket;                     // the UDP socket; -1: none yet
extern uint8_t* g_pGeneralReportBuffer;       // kReportBufferSize bytes
extern char* g_pSiteSurveyBuffer;  // kSiteSurveyBufferSize bytes: the last scan's list, zero before the first
