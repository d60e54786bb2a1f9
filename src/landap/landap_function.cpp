#include "landap/landap_function.h"

#include "camera/device.h"
#include "handlers/commands.h"
#include "handlers/site_survey.h"

int landap_function_init(const char* interfaceName) { return initDevice(interfaceName); }

int landap_discovery(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kLandapDiscovery, request, reply, capacity);
}

int landap_set_basic_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kSetBasicInfo, request, reply, capacity);
}

int landap_user_verification(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kUserVerification, request, reply, capacity);
}

int landap_change_admin_id_pwd(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kChangeAdminIdPwd, request, reply, capacity);
}

int landap_query_support_fun(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kLandapQuerySupportFun, request, reply, capacity);
}

int landap_get_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kGetNetworkAdvInfo, request, reply, capacity);
}

int landap_set_network_adv_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kSetNetworkAdvInfo, request, reply, capacity);
}

int landap_get_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kGetWifiInfo, request, reply, capacity);
}

int landap_set_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kSetWifiInfo, request, reply, capacity);
}

int landap_factory_reset(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kFactoryReset, request, reply, capacity);
}

int landap_get_system_datetime(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kGetSystemDatetime, request, reply, capacity);
}

int landap_set_system_datetime(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kSetSystemDatetime, request, reply, capacity);
}

int landap_get_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kGetSimpleWifiInfo, request, reply, capacity);
}

int landap_set_simple_wifi_info(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kSetSimpleWifiInfo, request, reply, capacity);
}

int landap_init_wifi_site_survey(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kInitWifiSiteSurvey, request, reply, capacity);
}

int landap_commit_setting(const uint8_t* request, uint8_t* reply, int capacity) {
    return serve(kLandap, kCommitSetting, request, reply, capacity);
}

int landap_checkSiteSurveyRequest(const uint8_t* request, uint8_t* reply, int capacity, int* accepted) {
    return checkSiteSurvey(kLandap, request, reply, capacity, *accepted);
}

int landap_fillSiteSurveyInfo(const uint8_t* request, uint8_t* reply, int capacity, int page, const char* sites,
                              int size) {
    return fillSiteSurveyPage(request, reply, capacity, page, sites, size);
}
