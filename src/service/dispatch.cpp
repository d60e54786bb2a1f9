#include "service/dispatch.h"

#include <stddef.h>

#include "handlers/qvp_function.h"
#include "landap/landap_function.h"
#include "protocol/opcodes.h"
#include "protocol/packet_header.h"

struct Row {
    uint16_t opcode;
    Handler* handler;
};

static constexpr Row kPrimaryRows[] = {
    {opcode::kDiscovery,        discovery            },
    {opcode::kSetBasicInfo,     set_basic_info       },
    {opcode::kUserVerification, user_verification    },
    {opcode::kChangeAdmin,      change_admin_id_pwd  },
    {opcode::kQuerySupport,     query_support_fun    },
    {opcode::kGetNetworkAdv,    get_network_adv_info },
    {opcode::kSetNetworkAdv,    set_network_adv_info },
    {opcode::kGetWifi,          get_wifi_info        },
    {opcode::kSetWifi,          set_wifi_info        },
    {opcode::kFactoryReset,     factory_reset        },
    {opcode::kGetDatetime,      get_system_datetime  },
    {opcode::kSetDatetime,      set_system_datetime  },
    {opcode::kGetSimpleWifi,    get_simple_wifi_info },
    {opcode::kSetSimpleWifi,    set_simple_wifi_info },
    {opcode::kInitSiteSurvey,   init_wifi_site_survey},
    {opcode::kCommitSetting,    commit_setting       },
    {opcode::kReboot,           reboot               },
    {opcode::kAlertInfo,        alert_info           },
};

static constexpr Row kLandapRows[] = {
    {opcode::kDiscovery,        landap_discovery            },
    {opcode::kSetBasicInfo,     landap_set_basic_info       },
    {opcode::kUserVerification, landap_user_verification    },
    {opcode::kChangeAdmin,      landap_change_admin_id_pwd  },
    {opcode::kQuerySupport,     landap_query_support_fun    },
    {opcode::kGetNetworkAdv,    landap_get_network_adv_info },
    {opcode::kSetNetworkAdv,    landap_set_network_adv_info },
    {opcode::kGetWifi,          landap_get_wifi_info        },
    {opcode::kSetWifi,          landap_set_wifi_info        },
    {opcode::kFactoryReset,     landap_factory_reset        },
    {opcode::kGetDatetime,      landap_get_system_datetime  },
    {opcode::kSetDatetime,      landap_set_system_datetime  },
    {opcode::kGetSimpleWifi,    landap_get_simple_wifi_info },
    {opcode::kSetSimpleWifi,    landap_set_simple_wifi_info },
    {opcode::kInitSiteSurvey,   landap_init_wifi_site_survey},
    {opcode::kCommitSetting,    landap_commit_setting       },
};

template <size_t Count>
static constexpr bool isSortedAndUnique(const Row (&rows)[Count]) {
    for (size_t i = 1; i < Count; i++) {
        if (rows[i - 1].opcode >= rows[i].opcode) return false;
    }
    return true;
}
static_assert(isSortedAndUnique(kPrimaryRows));
static_assert(isSortedAndUnique(kLandapRows));

template <size_t Count>
static Handler* findRow(const Row (&rows)[Count], uint16_t opcode) {
    for (const Row& row : rows) {
        if (row.opcode == opcode) return row.handler;
    }
    return nullptr;
}

static Handler* findPrimary(uint16_t opcode) { return findRow(kPrimaryRows, opcode); }
static Handler* findLandap(uint16_t opcode) { return findRow(kLandapRows, opcode); }

static constexpr FamilyDispatch kPrimaryDispatch{findPrimary, checkSiteSurveyRequest, fillSiteSurveyInfo};
static constexpr FamilyDispatch kLandapDispatch{findLandap, landap_checkSiteSurveyRequest, landap_fillSiteSurveyInfo};

const FamilyDispatch* findFamily(uint16_t protocol) {
    if (protocol == kPrimaryProtocol) return &kPrimaryDispatch;
    if (protocol == kLandapProtocol) return &kLandapDispatch;
    return nullptr;
}
