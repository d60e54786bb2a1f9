#include "support/command_table.h"

#include <cstdio>
#include <cstdlib>

#include "handlers/qvp_function.h"
#include "landap/landap_function.h"

namespace unit {

const Family& primaryFamily() {
    static const Family family{"primary", 2, "QVP", "qvp_function", ""};
    return family;
}

const Family& landapFamily() {
    static const Family family{"landap", 1, "landap", "landap_function", "landap_"};
    return family;
}

template <int (*Check)(const std::uint8_t*, std::uint8_t*, int, int*)>
static int checkAlone(const std::uint8_t* request, std::uint8_t* reply, int capacity) {
    int accepted = 0;
    return Check(request, reply, capacity, &accepted);
}

// What the two families have in common.
struct Pair {
    const char* name;
    std::uint16_t opcode;
    Handler primary, landap;
    Addressed addressed;
    Needs needs;
    int replyLength;
};

static std::vector<CommandRow> makeRows() {
    using enum Addressed;
    using enum Needs;
    static const Pair pairs[] = {
        {"set_basic_info", 0xA2, set_basic_info, landap_set_basic_info, ByMac, Credentials, 38},
        {"user_verification", 0xA3, user_verification, landap_user_verification, ByMac, Credentials, 26},
        {"change_admin_id_pwd", 0xA4, change_admin_id_pwd, landap_change_admin_id_pwd, ByMac, Credentials, 38},
        {"get_network_adv_info", 0xA6, get_network_adv_info, landap_get_network_adv_info, ByMac, Credentials, 547},
        {"set_network_adv_info", 0xA7, set_network_adv_info, landap_set_network_adv_info, ByMac, Credentials, 38},
        {"get_wifi_info", 0xA8, get_wifi_info, landap_get_wifi_info, ByMac, Credentials, 274},
        {"set_wifi_info", 0xA9, set_wifi_info, landap_set_wifi_info, ByMac, Credentials, 38},
        {"factory_reset", 0xAB, factory_reset, landap_factory_reset, ByMac, Credentials, 38},
        {"get_system_datetime", 0xAC, get_system_datetime, landap_get_system_datetime, ByMac, Credentials, 122},
        {"set_system_datetime", 0xAD, set_system_datetime, landap_set_system_datetime, ByMac, Credentials, 38},
        {"checkSiteSurveyRequest", 0xAE, checkAlone<checkSiteSurveyRequest>, checkAlone<landap_checkSiteSurveyRequest>,
         ByMac, Credentials, 746},
        {"get_simple_wifi_info", 0xAF, get_simple_wifi_info, landap_get_simple_wifi_info, ByMac, Credentials, 130},
        {"set_simple_wifi_info", 0xB0, set_simple_wifi_info, landap_set_simple_wifi_info, ByMac, Credentials, 38},
        {"init_wifi_site_survey", 0xB1, init_wifi_site_survey, landap_init_wifi_site_survey, ByMac, Credentials, 38},
        {"commit_setting", 0xC0, commit_setting, landap_commit_setting, ByMac, Credentials, 38},
    };
    const Family* primary = &primaryFamily();
    const Family* second = &landapFamily();
    std::vector<CommandRow> rows{
        {primary, "discovery", 0xA1, discovery, ByMacOrBroadcast, Nothing, 505},
        {second, "discovery", 0xA1, landap_discovery, ByMacOrBroadcast, Nothing, 334},
        {primary, "query_support_fun", 0xA5, query_support_fun, ByMacOrBroadcast, Nothing, 262},
        {second, "query_support_fun", 0xA5, landap_query_support_fun, ByMac, CredentialsIfPayload, 262},
        {primary, "reboot", 0x103, reboot, ByMac, Credentials, 38},
        {primary, "alert_info", 0x200, alert_info, ByMac, Nothing, 150},
    };
    for (const Pair& pair : pairs) {
        rows.push_back({primary, pair.name, pair.opcode, pair.primary, pair.addressed, pair.needs, pair.replyLength});
        rows.push_back({second, pair.name, pair.opcode, pair.landap, pair.addressed, pair.needs, pair.replyLength});
    }
    return rows;
}

const std::vector<CommandRow>& allCommands() {
    static const std::vector<CommandRow> rows = makeRows();
    return rows;
}

const CommandRow& command(const Family& family, const std::string& name) {
    for (const CommandRow& row : allCommands()) {
        if (row.family == &family && row.name == name) return row;
    }
    std::fprintf(stderr, "no command %s in family %s\n", name.c_str(), family.name.c_str());
    std::abort();
}

void PrintTo(const CommandRow& row, std::ostream* out) { *out << row.handlerName(); }

void PrintTo(const Family* family, std::ostream* out) { *out << family->name; }

}  // namespace unit
