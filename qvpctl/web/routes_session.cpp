// What is of no single camera: the session, the search, logins, and the model of settings.
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>

#include "client/text.h"
#include "qvpctl/tool.h"
#include "qvpctl/web/json_body.h"
#include "qvpctl/web/routes.h"
#include "qvpctl/web/virtual_cameras.h"

static Record interfaceRecords(const CommonOptions& common) try {
    Record records = Record::array();
    for (const client::Interface& one : chosenInterfaces(common)) {
        const client::Subnet& subnet = one.subnets.front();
        records.push_back({
            {"name",    one.name                           },
            {"address", client::addressText(subnet.address)},
            {"netmask", client::addressText(subnet.mask)   }
        });
    }
    return records;
} catch (const client::Error&) {
    return Record::array();
}

static WebAnswer sessionAnswer(const CommonOptions& common) {
    utsname system{};
    uname(&system);
    return jsonAnswer({
        {"version",        QVPCTL_VERSION          },
        {"host",           system.nodename         },
        {"interfaces",     interfaceRecords(common)},
        {"virtualCameras", canStartVirtualCameras()},
        {"isVirtual",      isOnVirtualLan()        },
        {"csrf",           "X-Qvpctl"              },
    });
}

static const char* groupKey(client::Group group) {
    switch (group) {
        case client::Group::Services:
            return "services";
        case client::Group::Clock:
            return "clock";
        case client::Group::Password:
            return "password";
        case client::Group::Wifi:
            return "wifi";
        case client::Group::Basic:
            break;
    }
    return "basic";
}

static Record choicesOf(const client::Setting& setting) {
    return setting.choices != nullptr ? Record(setting.choices()) : Record();
}

static WebAnswer settingsAnswer() {
    Record settings = Record::array();
    for (const client::Setting& one : client::allSettings()) {
        const client::GroupFacts& facts = client::factsOf(one.group);
        settings.push_back({
            {"key",         one.key            },
            {"group",       groupKey(one.group)},
            {"groupName",   facts.name         },
            {"effect",      facts.effect       },
            {"awaySeconds", facts.away.count() },
            {"summary",     one.summary        },
            {"values",      one.values         },
            {"quirk",       one.quirk          },
            {"choices",     choicesOf(one)     },
            {"secret",      one.isSecret()     },
            {"readOnly",    one.isReadOnly()   },
        });
    }
    return jsonAnswer({
        {"settings", settings}
    });
}

static WebAnswer takeLogin(WebState& state, const WebRequest& request) {
    const JsonBody body(request.body);
    const std::string name = body.textOr("mac", "");
    const auto mac = client::parseMac(name);
    if (!mac && !name.empty()) {
        return errorAnswer(400, "bad-value", "mac must be of the form 02:00:5e:10:00:01, or null");
    }
    state.setLogin(mac ? client::macText(*mac) : "", {body.text("user"), body.secret("password")});
    return emptyAnswer(204);
}

static WebAnswer startVirtualCameras(WebContext& context) {
    if (isOnVirtualLan()) return errorAnswer(409, "busy", "the virtual cameras are there already");
    if (!canStartVirtualCameras()) return errorAnswer(404, "not-found", "virtual-camera is not installed");
    tryVirtualCameras();
    context.startAgain();
    return emptyAnswer(202);
}

MaybeReaction routeSession(WebContext& context, const WebRequest& request) {
    if (isRequest(request, "GET", "/api/session")) return sessionAnswer(context.common);
    if (isRequest(request, "GET", "/api/settings")) return settingsAnswer();
    if (isRequest(request, "POST", "/api/login")) return takeLogin(context.state, request);
    if (isRequest(request, "DELETE", "/api/login")) {
        context.state.forgetLogins();
        return emptyAnswer(204);
    }
    if (isRequest(request, "POST", "/api/search")) {
        context.state.askForSearch();
        return emptyAnswer(202);
    }
    if (isRequest(request, "POST", "/api/virtual-cameras")) {
        return LaterAnswer([&context] { return startVirtualCameras(context); });
    }
    return std::nullopt;
}
