// The landap command family: the primary family's commands again under a protocol number of their own, without reboot
// and alert information, with a shorter discovery and a stricter, longer supported-function query.
#pragma once

#include "util/command.h"

// Start-up of the family, as qvp_function_init.
int landap_function_init(const char* interfaceName);

Handler landap_discovery;
Handler landap_set_basic_info;
Handler landap_user_verification;
Handler landap_change_admin_id_pwd;
Handler landap_query_support_fun;
Handler landap_get_network_adv_info;
Handler landap_set_network_adv_info;
Handler landap_get_wifi_info;
Handler landap_set_wifi_info;
Handler landap_factory_reset;
Handler landap_get_system_datetime;
Handler landap_set_system_datetime;
Handler landap_get_simple_wifi_info;
Handler landap_set_simple_wifi_info;
Handler landap_init_wifi_site_survey;
Handler landap_commit_setting;

SiteSurveyCheck landap_checkSiteSurveyRequest;
SiteSurveyFill landap_fillSiteSurveyInfo;
