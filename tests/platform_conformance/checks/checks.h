// The checks, an operation a function.
#pragma once

#include "report.h"

void checkRequestBegins(const Settings& settings);
void checkCfgRead(const Settings& settings);
void checkCfgWrite(const Settings& settings);
void checkCfgEnumSec(const Settings& settings);
void checkCfgEnumField(const Settings& settings);
void checkListFree(const Settings& settings);
void checkIfaddr(const Settings& settings);
void checkNetmask(const Settings& settings);
void checkGateway(const Settings& settings);
void checkDns(const Settings& settings);
void checkDns2(const Settings& settings);
void checkHwaddr(const Settings& settings);
void checkBase64dec(const Settings& settings);
void checkUsrInit(const Settings& settings);
void checkUsrGetGroupName(const Settings& settings);
void checkSIReadInt(const Settings& settings);
void checkSIWriteInt(const Settings& settings);
void checkOemTimezoneId(const Settings& settings);
void checkRealTimezoneId(const Settings& settings);
void checkSetTimezone(const Settings& settings);
void checkSiteList(const Settings& settings);
void checkRegion(const Settings& settings);
void checkVerifyFWCode(const Settings& settings);
void checkUpgradeFWCode(const Settings& settings);
void checkCfgAesDecode(const Settings& settings);
void checkUnpackCFG(const Settings& settings);

// What the checks with --store write over. A process of its own reads it, another one puts it back.
void saveStore();
void restoreStore();

// The offset of local time in seconds, as a program sees it that starts now: what a process of its own prints.
int printOffsets();
