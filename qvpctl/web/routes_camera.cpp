// What is of one camera: /api/cameras/MAC and what stands behind it.
#include "client/text.h"
#include "qvpctl/web/camera_work.h"
#include "qvpctl/web/json_body.h"
#include "qvpctl/web/routes.h"

using client::Found;

// The page knows a name as JSON has it, without the bytes that are no text.
static void confirm(const JsonBody& body, const Found& found) {
    const std::string& name = found.camera.name;
    const std::string expected = name.empty() ? client::macText(found.camera.mac) : name;
    if (jsonLine(body.text("confirm")) == jsonLine(expected)) return;
    throw client::Error(client::ErrorKind::BadValue,
                        "confirm must be the camera's present name, or its MAC if it has none");
}

static std::vector<client::Assignment> passwordOf(const JsonBody& body) {
    return {
        {client::findSetting("password"), body.secret("password")}
    };
}

static MaybeReaction act(WebContext& context, const std::string& what, const WebRequest& request, const Found& found) {
    const JsonBody body(request.body);
    if (what == "/plan") {
        return LaterAnswer(
            [&context, found, settings = body.settings()] { return planChange(context, found, settings); });
    }
    if (what == "/scan") return LaterAnswer([&context, found] { return scanNetworks(context, found); });
    if (what == "/changes") return beginChange(context, found, ChangeKind::Settings, body.settings());
    if (what == "/password") return beginChange(context, found, ChangeKind::Password, passwordOf(body));
    if (what == "/reboot" || what == "/factory-reset") {
        confirm(body, found);
        return beginBoot(context, found, what == "/reboot" ? ChangeKind::Reboot : ChangeKind::FactoryReset);
    }
    return std::nullopt;
}

MaybeReaction routeCamera(WebContext& context, const WebRequest& request) {
    constexpr std::string_view kFolder = "/api/cameras/";
    constexpr size_t kMacLength = 17;
    if (!request.path.starts_with(kFolder)) return std::nullopt;
    const std::string rest = request.path.substr(kFolder.size());
    const auto mac = client::parseMac(rest.substr(0, kMacLength));
    const auto found = mac ? context.state.camera(client::macText(*mac)) : std::nullopt;
    if (!found) return errorAnswer(404, "not-found", "there is no such camera");
    const std::string what = rest.substr(kMacLength);
    if (request.method == "GET" && what.empty()) {
        return LaterAnswer([&context, one = *found] { return readCamera(context, one); });
    }
    return request.method == "POST" ? act(context, what, request, *found) : std::nullopt;
}
