// Every command as a row: its name, how it is addressed and protected, the length of its reply, the work it does. The
// work stands in the file named for the group; the two families serve the same rows.
#pragma once

#include "util/command.h"

// discovery.cpp
extern const Command kDiscovery;
extern const Command kLandapDiscovery;

// basic_info.cpp
extern const Command kSetBasicInfo;

// administrator.cpp
extern const Command kUserVerification;
extern const Command kChangeAdminIdPwd;

// supported_functions.cpp
extern const Command kQuerySupportFun;
extern const Command kLandapQuerySupportFun;

// pending_requests.cpp
extern const Command kReboot;
extern const Command kFactoryReset;
extern const Command kCommitSetting;

// alert_info.cpp
extern const Command kAlertInfo;

// system_datetime.cpp
extern const Command kGetSystemDatetime;
extern const Command kSetSystemDatetime;

// network_adv.cpp
extern const Command kGetNetworkAdvInfo;
extern const Command kSetNetworkAdvInfo;

// wifi.cpp
extern const Command kGetWifiInfo;
extern const Command kSetWifiInfo;

// simple_wifi.cpp
extern const Command kGetSimpleWifiInfo;
extern const Command kSetSimpleWifiInfo;

// site_survey.cpp
extern const Command kInitWifiSiteSurvey;
extern const Command kCheckSiteSurveyRequest;
