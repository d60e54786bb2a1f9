// qvpctl scan: the wireless networks that a camera sees.
#include <unistd.h>

#include <iostream>
#include <memory>

#include "client/error.h"
#include "protocol/opcodes.h"
#include "qvpctl/commands.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/records.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"
#include "qvpctl/wait_bar.h"

static const char kExamples[] =
    "  qvpctl scan 'Front door'          scan, wait, and show the networks\n"
    "  qvpctl scan 'Front door' --last   what the last scan found\n";

static const Column kColumns[] = {
    {"SIGNAL",   "bar",      0},
    {"SSID",     "ssid",     0},
    {"SECURITY", "security", 0},
    {"CHANNEL",  "channel",  0},
};

struct ScanOptions {
    std::string camera;
    bool last = false;
    uint32_t timeout = 60;  // seconds
};

static Record withBar(Record record, bool isTerminal) {
    const unsigned signal = std::min(record["signal"].get<unsigned>(), 100u);
    const unsigned full = (signal + 19) / 20;
    std::string bar;
    for (unsigned i = 0; isTerminal && i < 5; i++) bar += i < full ? "\u25A0" : "\u25A1";
    record["bar"] = bar + (isTerminal ? " " : "") + std::to_string(signal) + "%";
    return record;
}

// A camera that scans does not answer meanwhile: its first answer is the end of the scan.
static void waitForScan(client::Session& session, WaitBar& bar, std::chrono::milliseconds announced,
                        std::chrono::seconds patience) {
    say("the camera scans; that takes up to " + std::to_string(announced.count() / 1000) + " s");
    bar.show(std::chrono::ceil<std::chrono::seconds>(announced));
    const bool isBack = session.awaitReturn(patience).has_value();
    bar.hide();
    if (isBack) return;
    throw client::Error(client::ErrorKind::Unverified, "the camera has not come back from its scan within " +
                                                           std::to_string(patience.count()) +
                                                           " s; 'qvpctl scan CAMERA --last' shows later what it found");
}

static int scan(const ScanOptions& options, const CommonOptions& common) {
    const StopSignal stop;
    client::UdpLink network(client::UdpLink::Hears::Replies, stop.descriptor());
    WaitBar link(network, common);
    const client::Found camera = findCamera(link, common, options.camera);
    client::Session session = openSession(link, common, camera, readLogin(common));
    if (!options.last) {
        waitForScan(session, link, session.request(opcode::kInitSiteSurvey), std::chrono::seconds(options.timeout));
    }
    const client::Survey survey = session.fetchSurvey();
    const auto output = tableOrJson(common.json, kColumns);
    const bool isTerminal = isatty(STDOUT_FILENO) != 0;
    for (const client::Site& site : survey.sites) {
        const Record record = recordOf(site);
        output->add(common.json ? record : withBar(record, isTerminal));
    }
    output->finish();
    if (!survey.isComplete) say("the camera sees more networks than the twenty it can tell");
    if (survey.sites.empty()) say("the camera sees no network");
    return kSuccess;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<ScanOptions>();
    addCamera(app, options->camera);
    addFlag(app, "--last", options->last, "Show what the last scan found, without a new one");
    addCount(app, "--timeout", options->timeout, "How many seconds to wait for the scan (default 60)");
    return [options, &common] { return scan(*options, common); };
}

const Subcommand kScan = {"scan", "Show the wireless networks that a camera sees.", kExamples, prepare};
