// The landap command family: the primary family's commands again under a protocol number of their own, without reboot
// and alert information, with a shorter discovery and a stricter, longer supported-function query. Handlers take and
// return what their primary twins do.
#pragma once

#include <stdint.h>

// Start-up of the family, as qvp_function_init.
int landap_function_init(const char* interfaceName);

int landap_discovery(const uint8_t* request, uint8_t* reply, int capacity);
int landap_set_basic_info(const uint8_t* request, uint8_t* reply, int capacity);
int landap_user_verification(const uint8_t* request, uint8_t* reply, int capacity);
int landap_change_admin_id_pwd(const uint8_t* request, uint8_t* reply, int capacity);
int landap_query_support_fun(const uint8_t* request, uint8_t* reply, int capacity);
int landap_get_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity);
int landap_set_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity);
int landap_get_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int landap_set_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int landap_factory_reset(const uint8_t* request, uint8_t* reply, int capacity);
int landap_get_system_datetime(const uint8_t* request, uint8_t* reply, int capacity);
int landap_set_system_datetime(const uint8_t* request, uint8_t* reply, int capacity);
int landap_get_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int landap_set_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int landap_init_wifi_site_survey(const uint8_t* request, uint8_t* reply, int capacity);
int landap_commit_setting(const uint8_t* request, uint8_t* reply, int capacity);

int landap_checkSiteSurveyRequest(const uint8_t* request, uint8_t* reply, int capacity, int* accepted);
int landap_fillSiteSurveyInfo(const uint8_t* request, uint8_t* reply, int capacity, int page, const char* sites,
                              int size);
