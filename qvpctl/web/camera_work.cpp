#include "qvpctl/web/camera_work.h"

#include <algorithm>
#include <exception>

#include "client/text.h"
#include "protocol/opcodes.h"
#include "qvpctl/boot.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/fleet/plan_records.h"
#include "qvpctl/records.h"
#include "qvpctl/tool.h"
#include "qvpctl/wait_bar.h"

using client::Assignment;
using client::CameraState;
using client::Error;
using client::ErrorKind;
using client::Found;
using client::Setting;

static std::string macOf(const Found& found) { return client::macText(found.camera.mac); }

static client::Login loginOf(const WebContext& context, const Found& found) {
    const auto login = context.state.login(macOf(found));
    if (!login) throw Error(ErrorKind::Credentials, "log in first: no user name and password of this camera are known");
    return *login;
}

enum class Read { All, Discovered, Heard };

static bool isKnown(const Setting& setting, Read read) {
    const std::string key = setting.key;
    if (read == Read::All) return true;
    if (read == Read::Discovered) return setting.group == client::Group::Basic;
    return key == "name" || key == "ipv4.address";
}

static WebAnswer settingsAnswer(const Found& found, const CameraState& state, Read read, bool needsLogin) {
    Record settings = Record::array();
    for (const Setting& one : client::allSettings()) {
        if (isKnown(one, read)) {
            settings.push_back(recordOf(one, state));
            continue;
        }
        settings.push_back({
            {"key",    one.key       },
            {"value",  nullptr       },
            {"secret", one.isSecret()}
        });
    }
    return jsonAnswer({
        {"mac",        macOf(found)},
        {"settings",   settings    },
        {"needsLogin", needsLogin  },
    });
}

WebAnswer readCamera(const WebContext& context, const Found& found) {
    CameraState state;
    state.camera = found.camera;
    const auto login = context.state.login(macOf(found));
    if (!found.answered) return settingsAnswer(found, state, Read::Heard, !login);
    if (!login) return settingsAnswer(found, state, Read::Discovered, true);
    try {
        withJob(context.common, {*login}, context.stop, [&](client::CameraJob& job) { state = job.readAll(found); });
    } catch (const Error& error) {
        if (error.kind() != ErrorKind::Credentials) throw;
        return settingsAnswer(found, state, Read::Discovered, true);
    }
    return settingsAnswer(found, state, Read::All, false);
}

WebAnswer planChange(const WebContext& context, const Found& found, const std::vector<Assignment>& assignments) {
    client::CameraPlan plan;
    withJob(context.common, {loginOf(context, found)}, context.stop,
            [&](client::CameraJob& job) { plan = job.look(found, assignments); });
    Record groups = Record::array();
    for (const client::Group group : plan.groups) {
        groups.push_back({
            {"name",   client::factsOf(group).name  },
            {"effect", client::factsOf(group).effect}
        });
    }
    return jsonAnswer({
        {"changes",     changesOf(plan.changes)},
        {"groups",      groups                 },
        {"awaySeconds", plan.away.count()      },
    });
}

// Runs it with a session and a link of its own.
static void withSession(const WebContext& context, const Found& found,
                        const std::function<void(client::Link&, client::Session&)>& work) {
    client::UdpLink network = linkWithReports(context.stop);
    WaitBar link(network, context.common);
    client::Session session = openSession(link, context.common, found, loginOf(context, found));
    work(link, session);
}

static Record surveyRecord(client::Session& session) {
    constexpr std::chrono::seconds kPatience(60);
    session.request(opcode::kInitSiteSurvey);
    if (!session.awaitReturn(kPatience)) {
        throw Error(ErrorKind::Unverified,
                    "the camera has not come back from its scan within " + std::to_string(kPatience.count()) + " s");
    }
    const client::Survey survey = session.fetchSurvey();
    Record networks = Record::array();
    for (const client::Site& site : survey.sites) networks.push_back(recordOf(site));
    return {
        {"networks", networks         },
        {"complete", survey.isComplete}
    };
}

WebAnswer scanNetworks(const WebContext& context, const Found& found) {
    if (!context.state.hold(macOf(found))) return errorAnswer(409, "busy", "something else is done with this camera");
    struct Release {
        WebState& state;
        std::string mac;
        ~Release() { state.release(mac); }
    };
    const Release release{context.state, macOf(found)};
    Record record;
    withSession(context, found, [&](client::Link&, client::Session& session) { record = surveyRecord(session); });
    return jsonAnswer(record);
}

// Whatever it throws is how the change ends.
static void finish(const WebContext& context, const std::string& id, const std::function<void()>& work) {
    std::optional<Error> error;
    try {
        work();
    } catch (const Error& thrown) {
        error = thrown;
    } catch (const std::exception& thrown) {
        error = Error(ErrorKind::Local, thrown.what());
    }
    if (error) context.state.askForSearch();
    context.state.endChange(id, error);
}

static WebAnswer begin(WebContext& context, const Found& found, ChangeKind kind,
                       const std::function<void(const std::string&)>& work) {
    const auto id = context.state.beginChange(macOf(found), kind);
    if (!id) return errorAnswer(409, "busy", "something else is done with this camera");
    const bool isTaken = context.jobs.start([&context, id = *id, work] { finish(context, id, [&] { work(id); }); });
    if (!isTaken) {
        context.state.endChange(*id, Error(ErrorKind::Local, "not tried: too many changes at once"));
        return errorAnswer(429, "too-many", "too many changes at once");
    }
    return jsonAnswer(
        {
            {"id", *id}
    },
        202);
}

// From here on the camera is known as it is, and by its new password.
static void remember(const WebContext& context, client::CameraJob& job, const Found& found, const client::Login& login,
                     const std::vector<Assignment>& assignments) {
    for (const Assignment& one : assignments) {
        const bool isPassword = std::string_view(one.setting->key) == "password";
        if (isPassword) context.state.setLogin(macOf(found), {login.user, std::get<client::Secret>(one.value)});
    }
    const auto now = job.find(found.camera.mac, found.interface, std::chrono::seconds(2));
    if (now) context.state.take(*now);
    // A search in the midst of which it moved has heard it at both addresses.
    if (!now || !client::isSame(now->camera.address, found.camera.address)) context.state.askForSearch();
}

WebAnswer beginChange(WebContext& context, const Found& found, ChangeKind kind,
                      const std::vector<Assignment>& assignments) {
    const client::Login login = loginOf(context, found);
    return begin(context, found, kind, [&context, found, assignments, login](const std::string& id) {
        withJob(context.common, {login}, context.stop, [&](client::CameraJob& job) {
            const client::CameraPlan plan = job.look(found, assignments);
            job.change(plan, [&](const client::Progress& progress) { context.state.stepChange(id, progress); });
            remember(context, job, found, login, assignments);
        });
    });
}

WebAnswer beginBoot(WebContext& context, const Found& found, ChangeKind kind) {
    loginOf(context, found);
    return begin(context, found, kind, [&context, found, kind](const std::string& id) {
        constexpr std::chrono::seconds kPatience(180), kUsual(60);
        const bool isReset = kind == ChangeKind::FactoryReset;
        withSession(context, found, [&](client::Link& link, client::Session& session) {
            session.request(isReset ? opcode::kFactoryReset : opcode::kReboot);
            if (isReset) context.state.forgetLogin(macOf(found));
            context.state.awayChange(id, isReset ? "factory settings" : "reboot", kUsual);
            const auto back = awaitBoot(link, session, kPatience);
            if (!back) throw Error(ErrorKind::Unverified, "the camera has not come back within 180 s");
            context.state.take(*back);
        });
    });
}
