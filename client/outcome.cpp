#include "client/outcome.h"

#include <algorithm>

#include "client/error.h"
#include "client/layout.h"
#include "protocol/result_codes.h"
#include "protocol/setting_reply.h"

namespace client {

struct Refusal {
    uint32_t code;
    const char* why;
};

static constexpr Refusal kRefusals[] = {
    {kBadPort,           "the port is 0 or 8088; choose another"                                             },
    {kBadAddressMode,    "the address mode is neither static nor DHCP"                                       },
    {kBadTime,           "the time is out of range; hour, minute and second must not be 0"                   },
    {kBadTimezone,       "it does not know that time zone; choose one of the same offset"                    },
    {kBadDaylightSaving, "daylight saving is neither on nor off"                                             },
    {kBadNtp,            "NTP is neither on nor off"                                                         },
    {kWifiNotEnabled,    "the settings do not enable the radio"                                              },
    {kBadChannel,        "the channel is not allowed in its radio region; 'qvpctl scan' shows which are used"},
    {kBadMode,           "the mode is neither infrastructure nor ad hoc"                                     },
    {kBadEncryption,     "it does not know that encryption"                                                  },
    {kBadAuthentication, "it does not know that authentication"                                              },
    {kBadWepKeyLength,   "it does not know that WEP key length"                                              },
    {kBadWepKeyFormat,   "it does not know that WEP key format"                                              },
    {kBadPreSharedKey,   "the key has the wrong length or characters for WPA"                                },
    {kBadWepKey,         "the key has the wrong length or characters for WEP"                                },
    {kBadActiveWepKey,   "the WEP key index is above 3"                                                      },
    {kBadNetworkFlag,    "it does not take the network services in that form"                                },
};

std::string refusalText(uint32_t resultCode) {
    const auto* row = std::ranges::find(kRefusals, resultCode, &Refusal::code);
    const std::string number = "code " + std::to_string(resultCode);
    return row != std::end(kRefusals) ? std::string(row->why) + " (" + number + ")"
                                      : "for a reason of its own, " + number;
}

void checkOutcome(std::span<const uint8_t> reply) {
    const uint16_t status = load(layoutOf<PacketHeader>(reply).status);
    if (status == kDone) return;
    if (status == kNotLogin) {
        throw Error(ErrorKind::Credentials,
                    "the camera refused the user name or the password; a factory reset at the camera itself brings the "
                    "first ones back");
    }
    const bool hasCode = status == kRefused && reply.size() >= sizeof(SettingReply);
    const std::string why =
        hasCode ? refusalText(load(layoutOf<SettingReply>(reply).result)) : "with status " + std::to_string(status);
    throw Error(ErrorKind::Refused, "the camera refused: " + why);
}

std::chrono::milliseconds timeAway(std::span<const uint8_t> reply) {
    if (reply.size() != sizeof(SettingReply)) return std::chrono::milliseconds(0);
    return std::chrono::milliseconds(load(layoutOf<SettingReply>(reply).milliseconds));
}

}  // namespace client
