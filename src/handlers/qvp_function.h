// The primary command family: a handler a command.
#pragma once

#include "util/command.h"

// Start-up of the family: fixes the served interface and its MAC. Returns 0, or -1 for a null name.
int qvp_function_init(const char* interfaceName);

Handler discovery;
Handler set_basic_info;
Handler user_verification;
Handler change_admin_id_pwd;
Handler query_support_fun;
Handler get_network_adv_info;
Handler set_network_adv_info;
Handler get_wifi_info;
Handler set_wifi_info;
Handler factory_reset;
Handler get_system_datetime;
Handler set_system_datetime;
Handler get_simple_wifi_info;
Handler set_simple_wifi_info;
Handler init_wifi_site_survey;
Handler commit_setting;
Handler reboot;
Handler alert_info;

SiteSurveyCheck checkSiteSurveyRequest;
SiteSurveyFill fillSiteSurveyInfo;
