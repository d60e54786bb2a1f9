#include "handlers/qvp_function.h"

#include "camera/device.h"
#include "handlers/commands.h"
#include "handlers/site_survey.h"

int qvp_function_init(const char* interfaceName) { return initDevice(interfaceName); }

int discovery(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kDiscovery, request, reply, capacity);
}

int set_basic_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kSetBasicInfo, request, reply, capacity);
}

int user_verification(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kUserVerification, request, reply, capacity);
}

int change_admin_id_pwd(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kChangeAdminIdPwd, request, reply, capacity);
}

int query_support_fun(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kQuerySupportFun, request, reply, capacity);
}

int get_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kGetNetworkAdvInfo, request, reply, capacity);
}

int set_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kSetNetworkAdvInfo, request, reply, capacity);
}

int get_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kGetWifiInfo, request, reply, capacity);
}

int set_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kSetWifiInfo, request, reply, capacity);
}

int factory_reset(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kFactoryReset, request, reply, capacity);
}

int get_system_datetime(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kGetSystemDatetime, request, reply, capacity);
}

int set_system_datetime(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kSetSystemDatetime, request, reply, capacity);
}

int get_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kGetSimpleWifiInfo, request, reply, capacity);
}

int set_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kSetSimpleWifiInfo, request, reply, capacity);
}

int init_wifi_site_survey(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kInitWifiSiteSurvey, request, reply, capacity);
}

int commit_setting(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kCommitSetting, request, reply, capacity);
}

int reboot(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kReboot, request, reply, capacity);
}

int alert_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kPrimary, kAlertInfo, request, reply, capacity);
}

int checkSiteSurveyRequest(const uint8_t* request, uint8_t* reply, int capacity, int* accepted) {
    return checkSiteSurvey(kPrimary, request, reply, capacity, *accepted);
}

int fillSiteSurveyInfo(const uint8_t* request, uint8_t* reply, int capacity, int page, const char* sites, int size) {
    return fillSiteSurveyPage(request, reply, capacity, page, sites, size);
}
