// UPnP, dynamic DNS and PPPoE.
#include "client/settings/rows.h"

namespace client {

static std::string getUpnp(const CameraState& state) { return onOff(state.services->upnp); }
static void setUpnp(CameraState& wanted, const std::string& text) { wanted.services->upnp = parseOnOff(text); }

static std::string getDdnsUser(const CameraState& state) { return state.services->ddnsUser; }
static std::string getDdnsHost(const CameraState& state) { return state.services->ddnsHost; }
static const Secret* ddnsPassword(const CameraState& state) { return &state.services->ddnsPassword; }

static void setDdnsUser(CameraState& wanted, const std::string& text) {
    checkLength(text, kLongestDdnsText);
    wanted.services->ddnsUser = text;
}

static void setDdnsHost(CameraState& wanted, const std::string& text) {
    checkLength(text, kLongestDdnsText);
    wanted.services->ddnsHost = text;
}

static void setDdnsPassword(CameraState& wanted, const Secret& text) {
    checkLength(text.reveal(), kLongestDdnsText);
    wanted.services->ddnsPassword = text;
}

static std::string getPppoe(const CameraState& state) { return onOff(state.services->pppoe); }
static std::string getPppoeUser(const CameraState& state) { return state.services->pppoeUser; }

static constexpr char kSwitchedWithUpnp[] =
    "dynamic DNS has no switch of its own: a change of its values switches it on or off as upnp is";

static constexpr Setting kServicesRows[] = {
    {.key = "upnp",
     .group = Group::Services,
     .summary = "whether it announces itself by UPnP",
     .values = "on or off",
     .quirk = "",
     .choices = onOffChoices,
     .get = getUpnp,
     .set = setUpnp},
    {.key = "ddns.user",
     .group = Group::Services,
     .summary = "user name at its dynamic DNS provider",
     .values = "text of at most 63 bytes",
     .quirk = kSwitchedWithUpnp,
     .get = getDdnsUser,
     .set = setDdnsUser},
    {.key = "ddns.password",
     .group = Group::Services,
     .summary = "password there",
     .values = "a secret of at most 63 bytes",
     .quirk = kSwitchedWithUpnp,
     .setSecret = setDdnsPassword,
     .secret = ddnsPassword},
    {.key = "ddns.host",
     .group = Group::Services,
     .summary = "the host name it keeps there",
     .values = "text of at most 63 bytes",
     .quirk = kSwitchedWithUpnp,
     .get = getDdnsHost,
     .set = setDdnsHost},
    {.key = "pppoe.enabled",
     .group = Group::Services,
     .summary = "whether it dials in by PPPoE",
     .values = "on or off",
     .quirk = "cameras tell it but do not let it be set",
     .choices = onOffChoices,
     .get = getPppoe},
    {.key = "pppoe.user",
     .group = Group::Services,
     .summary = "user name for that",
     .values = "text",
     .quirk = "cameras tell it but do not let it be set",
     .get = getPppoeUser                          },
};

std::span<const Setting> servicesRows() { return kServicesRows; }

}  // namespace client
