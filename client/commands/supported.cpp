#include "client/commands/supported.h"

#include <algorithm>

#include "client/layout.h"
#include "protocol/opcodes.h"
#include "protocol/supported_functions.h"

namespace client {

std::vector<uint16_t> decodeSupported(std::span<const uint8_t> reply) {
    const auto told = layoutOf<SupportedFunctionsReply>(reply);
    std::vector<uint16_t> opcodes;
    for (const Le16 code : told.opcodes) {
        if (load(code) != 0) opcodes.push_back(load(code));
    }
    return opcodes;
}

struct NamedCommand {
    uint16_t opcode;
    const char* name;
};

static constexpr NamedCommand kCommands[] = {
    {opcode::kPresenceReport,   "presence report"              },
    {opcode::kDiscovery,        "discovery"                    },
    {opcode::kSetBasicInfo,     "set basic information"        },
    {opcode::kUserVerification, "user verification"            },
    {opcode::kChangeAdmin,      "change administrator password"},
    {opcode::kQuerySupport,     "supported-function query"     },
    {opcode::kGetNetworkAdv,    "get advanced network settings"},
    {opcode::kSetNetworkAdv,    "set advanced network settings"},
    {opcode::kGetWifi,          "get wireless settings"        },
    {opcode::kSetWifi,          "set wireless settings"        },
    {opcode::kFactoryReset,     "factory reset"                },
    {opcode::kGetDatetime,      "get date and time"            },
    {opcode::kSetDatetime,      "set date and time"            },
    {opcode::kSiteSurvey,       "fetch the site survey"        },
    {opcode::kGetSimpleWifi,    "get simple wireless settings" },
    {opcode::kSetSimpleWifi,    "set simple wireless settings" },
    {opcode::kInitSiteSurvey,   "start a site survey"          },
    {opcode::kCommitSetting,    "commit settings"              },
    {opcode::kReboot,           "reboot"                       },
    {opcode::kAlertInfo,        "alert information"            },
};

const char* commandName(uint16_t opcode) {
    const auto* row = std::ranges::find(kCommands, opcode, &NamedCommand::opcode);
    return row != std::end(kCommands) ? row->name : "";
}

}  // namespace client
