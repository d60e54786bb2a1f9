// qvpctl revert: puts back what cameras had before a file was applied.
#include <fcntl.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>

#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/fleet/change_run.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/fleet/journal.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/tool.h"

using client::Assignment;
using client::Error;
using client::ErrorKind;
using client::Found;
using Values = std::map<std::string, std::string>;

static const char kExamples[] =
    "  qvpctl revert site.csv.journal                         what was there before 'qvpctl apply site.csv'\n"
    "  qvpctl revert site.csv.journal --password-file new.txt  the password that the cameras have now\n"
    "  qvpctl revert site.csv.journal --password-file old.txt --other-password @new.txt\n"
    "                                                         after a run that gave some of them a new one\n";

struct RevertOptions {
    FleetOptions fleet;
    std::string otherPassword;  // where it is; empty: there is none
};

static bool isOfNetwork(const std::string& key) { return key.starts_with("ipv4."); }

// A camera that cannot be asked is told all of its basic settings: what is not said to it would be lost. One that had
// its address by DHCP gets that back, and the rest with it.
static std::vector<Assignment> assignmentsOf(const CameraBefore& before, const Found& found) {
    Values values = before.changed;
    if (!found.answered) values.insert(before.basic.begin(), before.basic.end());
    const bool isNetwork = std::ranges::any_of(values, [](const auto& one) { return isOfNetwork(one.first); });
    const auto method = before.basic.find("ipv4.method");
    if (isNetwork && method != before.basic.end() && method->second == "dhcp") {
        std::erase_if(values, [](const auto& one) { return isOfNetwork(one.first); });
        values["ipv4.method"] = "dhcp";
    }
    // The router of another network would keep the camera from getting its address back.
    const bool isGatewayKnown = values.contains("ipv4.gateway") || before.basic.contains("ipv4.gateway");
    if (values.contains("ipv4.address") && !isGatewayKnown) values["ipv4.gateway"] = "none";
    std::vector<Assignment> assignments;
    for (const auto& [key, value] : values) {
        const client::Setting* setting = client::findSetting(key);
        if (setting == nullptr || setting->isSecret()) {
            throw Error(ErrorKind::BadValue, "the journal has no setting " + key);
        }
        assignments.push_back({setting, value});
    }
    return assignments;
}

static void tellLost(const JournalContent& content) {
    std::map<std::string, size_t> counts;
    for (const auto& [mac, before] : content.before) {
        for (const std::string& key : before.lost) counts[key]++;
    }
    for (const auto& [key, count] : counts) {
        const char* const what = key == "ipv4.gateway" ? " is not known from before, and becomes none with the address"
                                                       : " cannot be put back and stays as it is";
        say(key + what + ", in " + std::to_string(count) + (count == 1 ? " camera" : " cameras"));
    }
}

static std::vector<client::FileCamera> camerasOf(const JournalContent& content) {
    std::vector<client::FileCamera> cameras;
    for (const auto& [text, before] : content.before) {
        const auto mac = client::parseMac(text);
        if (!mac) throw Error(ErrorKind::BadValue, "the journal has no camera " + text);
        cameras.emplace_back();
        cameras.back().mac = *mac;
    }
    return cameras;
}

static const Found* foundOf(const std::vector<Found>& found, Mac mac) {
    const Found* best = nullptr;
    for (const Found& one : found) {
        const bool isIt = client::isSame(one.camera.mac, mac);
        if (isIt && (best == nullptr || (one.answered && !best->answered))) best = &one;
    }
    return best;
}

// A run that was cut off while it changed the password leaves cameras with either.
static std::vector<client::Login> readLogins(const RevertOptions& options, const CommonOptions& common) {
    const std::string& source = options.otherPassword;
    if (!source.empty() && (source == "-" || !isSecretSource(source))) {
        throw Error(ErrorKind::BadValue,
                    "the other password must not stand on the command line: use --other-password "
                    "@FILE or --other-password env:NAME");
    }
    std::vector<client::Login> logins = {readLogin(common)};
    if (!source.empty()) logins.push_back({logins.front().user, readSecret("other-password", source)});
    return logins;
}

static int revert(const RevertOptions& options, const CommonOptions& common) {
    const std::string& path = options.fleet.file;
    const JournalContent content = readJournal(path);
    Journal journal = Journal::goOn(path);
    const std::vector<client::Login> logins = readLogins(options, common);
    const StopSignal stop;
    signal(SIGPIPE, SIG_IGN);  // whoever reads the notes may go; the changes are finished
    tellLost(content);
    const std::vector<client::FileCamera> cameras = camerasOf(content);
    const std::vector<Found> found = callRoll(common, stop.descriptor(), cameras);
    std::vector<Outcome> outcomes;
    const auto note = [&](const Outcome& outcome) {
        printOutcome(outcome, common.json);
        outcomes.push_back(outcome);
    };
    std::vector<ChangeTask> tasks;
    for (const client::FileCamera& camera : cameras) {
        if (const Found* one = foundOf(found, camera.mac)) {
            tasks.push_back({*one, assignmentsOf(content.before.at(client::macText(camera.mac)), *one), logins});
        } else {
            note({camera.mac, {}, {}, Error(ErrorKind::NotFound, "it has neither answered nor reported")});
        }
    }
    const ChangeWatch watch = {[](const client::CameraPlan&) {}, note};
    ChangeRun(common, options.fleet.parallel, stop.descriptor(), watch).run(tasks, ChangeRun::First::WithTheOthers);
    if (!isStopped(stop.descriptor())) journal.noteEnd();
    printOutcomes(outcomes, common.json);
    if (isStopped(stop.descriptor())) throw Error(ErrorKind::Unverified, "stopped: the same command goes on");
    return worstOf(outcomes);
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<RevertOptions>();
    addNeededWord(app, "JOURNAL", options->fleet.file, "What 'qvpctl apply' has kept, FILE.journal");
    addText(app, "--other-password", options->otherPassword, "SECRET",
            "For cameras that refuse the password: @FILE or env:NAME");
    addParallel(app, options->fleet);
    return [options, &common] { return revert(*options, common); };
}

const Subcommand kRevert = {"revert", "Put back what cameras had before a file was applied.", kExamples, prepare};
