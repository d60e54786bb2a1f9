// Name, web port and IPv4: one request, which takes the camera away for some seconds.
#include "client/commands/basic_info.h"
#include "client/settings/rows.h"
#include "client/text.h"
#include "protocol/basic_info.h"

namespace client {

static std::string getName(const CameraState& state) { return state.camera.name; }

static void setName(CameraState& wanted, const std::string& text) {
    checkLength(text, kLongestName);
    wanted.camera.name = text;
}

static std::string getHttpPort(const CameraState& state) { return std::to_string(state.camera.httpPort); }

static void setHttpPort(CameraState& wanted, const std::string& text) {
    const unsigned port = parseNumber(text, 1, 65535);
    if (port == kReservedPort) throw badValue("is a port that cameras keep for themselves; 8087 and 8089 are free");
    wanted.camera.httpPort = static_cast<uint16_t>(port);
}

static std::string getMethod(const CameraState& state) { return state.camera.dhcp ? "dhcp" : "static"; }

static void setMethod(CameraState& wanted, const std::string& text) {
    if (text != "dhcp" && text != "static") throw badValue("must be 'dhcp' or 'static'");
    wanted.camera.dhcp = text == "dhcp";
}

static std::vector<std::string> methods() { return {"dhcp", "static"}; }

static std::string getAddress(const CameraState& state) {
    const auto length = prefixLength(state.camera.netmask);
    const std::string mask = length ? std::to_string(*length) : addressText(state.camera.netmask);
    return addressText(state.camera.address) + "/" + mask;
}

static Ipv4 addressOf(const std::string& text) {
    if (const auto address = parseAddress(text)) return *address;
    throw badValue("must be an IPv4 address such as 192.168.1.20");
}

// A router or a name server.
static Ipv4 hostOf(const std::string& text) {
    const Ipv4 address = addressOf(text);
    constexpr int kWholeNetwork = 8;  // whatever it is, only its first number is looked at
    if (!isHostAddress(address, kWholeNetwork)) throw badValue(text + " is not the address of a host");
    return address;
}

static void setAddress(CameraState& wanted, const std::string& text) {
    const size_t slash = text.find('/');
    if (slash == text.npos) throw badValue("needs the length of its network's prefix, such as " + text + "/24");
    const Ipv4 address = addressOf(text.substr(0, slash));
    const unsigned length = parseNumber(text.substr(slash + 1), 1, 30);
    if (!isHostAddress(address, static_cast<int>(length))) throw badValue("is not the address of a host");
    wanted.camera.address = address;
    wanted.camera.netmask = maskOf(static_cast<int>(length));
    wanted.camera.dhcp = false;
}

static std::string getGateway(const CameraState& state) {
    return isSet(state.camera.gateway) ? addressText(state.camera.gateway) : "none";
}

static void setGateway(CameraState& wanted, const std::string& text) {
    wanted.camera.gateway = text == "none" ? Ipv4{} : hostOf(text);
    wanted.camera.dhcp = false;
}

static std::string getDns(const CameraState& state) {
    std::string text;
    for (const Ipv4 server : state.camera.dns) text += (text.empty() ? "" : ",") + addressText(server);
    return text.empty() ? "none" : text;
}

static void setDns(CameraState& wanted, const std::string& text) {
    std::vector<Ipv4> servers;
    for (size_t start = 0; text != "none" && start <= text.size();) {
        const size_t end = std::min(text.find(',', start), text.size());
        servers.push_back(hostOf(text.substr(start, end - start)));
        start = end + 1;
    }
    if (servers.size() > 2) throw badValue("has more than the two addresses that a camera keeps");
    wanted.camera.dns = servers;
    wanted.camera.dhcp = false;
}

static constexpr Setting kBasicRows[] = {
    {.key = "name",
     .group = Group::Basic,
     .summary = "what the camera is called",
     .values = "text of at most 63 bytes",
     .quirk = "",
     .get = getName,
     .set = setName    },
    {.key = "http-port",
     .group = Group::Basic,
     .summary = "the port of its web page",
     .values = "1 to 65535, but not 8088",
     .quirk = "",
     .get = getHttpPort,
     .set = setHttpPort},
    {.key = "ipv4.method",
     .group = Group::Basic,
     .summary = "where its address comes from",
     .values = "dhcp or static",
     .quirk = "static without ipv4.address keeps the address it has",
     .choices = methods,
     .get = getMethod,
     .set = setMethod},
    {.key = "ipv4.address",
     .group = Group::Basic,
     .summary = "its address and the length of its network's prefix",
     .values = "such as 192.168.1.20/24",
     .quirk = "makes ipv4.method static",
     .get = getAddress,
     .set = setAddress },
    {.key = "ipv4.gateway",
     .group = Group::Basic,
     .summary = "the router it reaches other networks by",
     .values = "an address, or none",
     .quirk = "makes ipv4.method static",
     .get = getGateway,
     .set = setGateway },
    {.key = "ipv4.dns",
     .group = Group::Basic,
     .summary = "its name servers",
     .values = "one or two addresses with a comma between them, or none",
     .quirk = "makes ipv4.method static",
     .get = getDns,
     .set = setDns     },
};

std::span<const Setting> basicRows() { return kBasicRows; }

}  // namespace client
