// The primary command family: one handler a command. Each takes a request of at least 22 bytes in a 1024-byte buffer
// (zero behind its end) and a zeroed reply buffer, and returns the reply's length, or -1: send nothing.
#pragma once

#include <stdint.h>

// Start-up of the family: fixes the served interface and its MAC. Returns 0, or -1 for a null name.
int qvp_function_init(const char* interfaceName);

int discovery(const uint8_t* request, uint8_t* reply, int capacity);
int set_basic_info(const uint8_t* request, uint8_t* reply, int capacity);
int user_verification(const uint8_t* request, uint8_t* reply, int capacity);
int change_admin_id_pwd(const uint8_t* request, uint8_t* reply, int capacity);
int query_support_fun(const uint8_t* request, uint8_t* reply, int capacity);
int get_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity);
int set_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity);
int get_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int set_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int factory_reset(const uint8_t* request, uint8_t* reply, int capacity);
int get_system_datetime(const uint8_t* request, uint8_t* reply, int capacity);
int set_system_datetime(const uint8_t* request, uint8_t* reply, int capacity);
int get_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int set_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity);
int init_wifi_site_survey(const uint8_t* request, uint8_t* reply, int capacity);
int commit_setting(const uint8_t* request, uint8_t* reply, int capacity);
int reboot(const uint8_t* request, uint8_t* reply, int capacity);
int alert_info(const uint8_t* request, uint8_t* reply, int capacity);

// The site list, in two steps: the check sets *accepted to 1 when the list may be sent, and then each call of the fill
// function builds one page (-1: no such page) from the `size` bytes of the driver's list.
int checkSiteSurveyRequest(const uint8_t* request, uint8_t* reply, int capacity, int* accepted);
int fillSiteSurveyInfo(const uint8_t* request, uint8_t* reply, int capacity, int page, const char* sites, int size);
