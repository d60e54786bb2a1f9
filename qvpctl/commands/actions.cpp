// The commands that ask a camera for one thing: verify, reboot, factory-reset, commit, supported, alert.
#include <unistd.h>

#include <iostream>
#include <memory>

#include "client/commands/supported.h"
#include "client/error.h"
#include "client/text.h"
#include "protocol/opcodes.h"
#include "qvpctl/boot.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/output.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"
#include "qvpctl/wait_bar.h"

using client::Error;
using client::ErrorKind;

static const Column kResult[] = {
    {"CAMERA", "mac",    0},
    {"RESULT", "result", 0},
};

static void tellResult(const CommonOptions& common, const client::Session& session, const std::string& result) {
    const auto output = tableOrJson(common.json, kResult);
    output->add({
        {"mac",    client::macText(session.target().mac)},
        {"result", result                               }
    });
    output->finish();
}

enum class NeedsLogin { No, Yes };

static client::Session open(client::Link& link, const CommonOptions& common, const std::string& camera,
                            NeedsLogin login) {
    const client::Found found = findCamera(link, common, camera);
    return openSession(link, common, found, login == NeedsLogin::Yes ? readLogin(common) : client::Login{});
}

static int verify(const CommonOptions& common, const std::string& camera) {
    client::UdpLink link(client::UdpLink::Hears::Replies);
    client::Session session = open(link, common, camera, NeedsLogin::Yes);
    const bool isAdministrator = session.checkLogin() == client::UserClass::Administrator;
    tellResult(common, session, isAdministrator ? "administrator" : "accepted, but not in the group of administrators");
    return kSuccess;
}

// What a command that takes the camera away does about it.
struct AwayOptions {
    std::string camera;
    bool noWait = false;
    bool yes = false;
    uint32_t timeout = 180;  // seconds; longer than any camera takes to boot
};

static void waitForBoot(WaitBar& link, const AwayOptions& options, client::Session& session) {
    say("the camera reboots; waiting until it is back");
    const std::chrono::seconds patience(options.timeout);
    link.show(patience);
    const bool isBack = awaitBoot(link, session, patience).has_value();
    link.hide();
    if (isBack) return;
    throw Error(ErrorKind::Unverified, "the camera has not come back within " + std::to_string(options.timeout) +
                                           " s; 'qvpctl discover --wait 31' shows it as soon as it is");
}

static int reboot(const CommonOptions& common, const AwayOptions& options) {
    const StopSignal stop;
    client::UdpLink network = linkWithReports(stop.descriptor());
    WaitBar link(network, common);
    client::Session session = open(link, common, options.camera, NeedsLogin::Yes);
    session.request(opcode::kReboot);
    if (!options.noWait) waitForBoot(link, options, session);
    tellResult(common, session, options.noWait ? "asked to reboot" : "back after its reboot");
    return kSuccess;
}

static bool isConfirmed(const std::string& question) {
    if (isatty(STDIN_FILENO) == 0) return false;
    std::cerr << question << " [y/N] ";
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "yes";
}

static int factoryReset(const CommonOptions& common, const AwayOptions& options) {
    const StopSignal stop;
    client::UdpLink network = linkWithReports(stop.descriptor());
    WaitBar link(network, common);
    client::Session session = open(link, common, options.camera, NeedsLogin::Yes);
    const std::string mac = client::macText(session.target().mac);
    if (!options.yes && !isConfirmed("Reset camera " + mac + " to its factory settings, address and password too?")) {
        throw Error(ErrorKind::BadValue, "nothing was reset; --yes does it without asking");
    }
    session.request(opcode::kFactoryReset);
    if (!options.noWait) waitForBoot(link, options, session);
    tellResult(common, session,
               options.noWait ? "asked for its factory settings; it reboots" : "back with its factory settings");
    return kSuccess;
}

static int commit(const CommonOptions& common, const std::string& camera) {
    client::UdpLink link(client::UdpLink::Hears::Replies);
    client::Session session = open(link, common, camera, NeedsLogin::Yes);
    session.request(opcode::kCommitSetting);
    tellResult(common, session, "committed");
    return kSuccess;
}

static const Column kSupportedColumns[] = {
    {"OPCODE",  "opcode",  0},
    {"COMMAND", "command", 0},
};

static int supported(const CommonOptions& common, const std::string& camera) {
    client::UdpLink link(client::UdpLink::Hears::Replies);
    client::Session session = open(link, common, camera, NeedsLogin::No);
    const auto output = tableOrJson(common.json, kSupportedColumns);
    for (const uint16_t code : session.supported()) {
        char number[8];
        snprintf(number, sizeof number, "0x%04X", code);
        output->add({
            {"opcode",  number                   },
            {"command", client::commandName(code)}
        });
    }
    output->finish();
    return kSuccess;
}

static int alert(const CommonOptions& common, const std::string& camera) {
    client::UdpLink link(client::UdpLink::Hears::Replies);
    client::Session session = open(link, common, camera, NeedsLogin::No);
    session.askAlert();
    tellResult(common, session, "answered; cameras have nothing more to tell");
    return kSuccess;
}

template <int Run(const CommonOptions&, const std::string&)>
static Work prepareSimple(CLI::App& app, const CommonOptions& common) {
    const auto camera = std::make_shared<std::string>();
    addCamera(app, *camera);
    return [camera, &common] { return Run(common, *camera); };
}

static void addAwayOptions(CLI::App& app, AwayOptions& options) {
    addCamera(app, options.camera);
    addFlag(app, "--no-wait", options.noWait, "Do not wait until it is back");
    addCount(app, "--timeout", options.timeout, "How many seconds to wait for that (default 180)");
}

static Work prepareReboot(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<AwayOptions>();
    addAwayOptions(app, *options);
    return [=, &common] { return reboot(common, *options); };
}

static Work prepareFactoryReset(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<AwayOptions>();
    addAwayOptions(app, *options);
    addFlag(app, "--yes", options->yes, "Do not ask");
    return [=, &common] { return factoryReset(common, *options); };
}

const Subcommand kVerify = {"verify", "Check user name and password.",
                            "  qvpctl verify 'Front door' --user admin --password-file password.txt\n",
                            prepareSimple<verify>};
const Subcommand kReboot = {"reboot", "Reboot a camera and wait until it is back.",
                            "  qvpctl reboot 'Front door'\n  qvpctl reboot 'Front door' --no-wait\n", prepareReboot};
const Subcommand kFactoryReset = {"factory-reset", "Bring back a camera's factory settings and wait until it is back.",
                                  "  qvpctl factory-reset 02:00:5e:10:00:01         asks first\n"
                                  "  qvpctl factory-reset 02:00:5e:10:00:01 --yes   does not\n",
                                  prepareFactoryReset};
const Subcommand kCommit = {"commit", "Ask a camera to keep its settings for good.", "  qvpctl commit 'Front door'\n",
                            prepareSimple<commit>};
const Subcommand kSupported = {"supported", "List the optional commands a camera serves.",
                               "  qvpctl supported 'Front door'\n", prepareSimple<supported>};
const Subcommand kAlert = {"alert", "Ask a camera for alerts.", "  qvpctl alert 'Front door'\n", prepareSimple<alert>};
