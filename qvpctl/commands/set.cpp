// qvpctl set: changes settings of one camera.
#include <algorithm>
#include <iostream>
#include <memory>

#include "client/error.h"
#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/commands/set.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/keys.h"
#include "qvpctl/records.h"
#include "qvpctl/secret_source.h"
#include "qvpctl/tool.h"
#include "qvpctl/wait_bar.h"

using client::Assignment;
using client::CameraState;
using client::Error;
using client::ErrorKind;
using client::Found;

static const char kExamples[] =
    "  qvpctl set 02:00:5e:10:00:01 name='Front door' ipv4.address=192.168.1.20/24\n"
    "  qvpctl set 'Front door' wifi.ssid=Workshop wifi.security=wpa2-aes wifi.key=@key.txt\n"
    "  qvpctl set 192.168.1.20 time.zone=Europe/Berlin time.ntp=off time.now=now\n";

// A camera that is heard only by its reports sends one every 30 seconds.
static constexpr std::chrono::seconds kReportInterval(31);

class Setter {
public:
    Setter(const SetOptions& options, const CommonOptions& common) : options_(options), common_(common) {
        for (const std::string& text : options.assignments) assignments_.push_back(parseAssignment(text));
    }

    int run() {
        refuseNow();
        client::UdpLink network = linkWithReports();
        WaitBar link(network);
        bar_ = &link;
        const bool isMac = client::parseMac(options_.camera).has_value();
        const Found camera =
            findCamera(link, common_, options_.camera, isMac ? kReportInterval : std::chrono::seconds(0));
        client::Session session = openSession(link, common_, camera, readLogin(common_));
        if (camera.answered) {
            change(session);
        } else {
            changeUnheard(session, camera);
        }
        return kSuccess;
    }

private:
    // Values that no camera takes need no camera to be refused.
    void refuseNow() const {
        CameraState any;
        any.services.emplace();
        any.wifi.emplace();
        any.clock.emplace();
        std::vector<Assignment> alone;
        std::ranges::copy_if(assignments_, std::back_inserter(alone),
                             [](const Assignment& one) { return std::string_view(one.setting->key) != "wifi.key"; });
        client::withAssignments(any, alone);
    }

    std::vector<client::Group> groups() const {
        std::vector<const client::Setting*> settings;
        for (const Assignment& one : assignments_) settings.push_back(one.setting);
        return groupsOf(settings);
    }

    void change(client::Session& session) {
        const CameraState state = session.read(groups());
        const CameraState wanted = client::withAssignments(state, assignments_);
        if (!client::changedGroups(state, wanted).empty()) {
            session.apply(state, wanted, watch(), end());
            if (!options_.noWait) verify(session, wanted, assignments_);
        }
        report(assignments_, state, wanted);
    }

    static bool isBasic(const Assignment& one) { return one.setting->group == client::Group::Basic; }

    // Its web port cannot be read, and every request sets it. The rest of what is asked comes when it can answer.
    void changeUnheard(client::Session& session, const Found& camera) {
        std::vector<Assignment> first, rest;
        std::ranges::partition_copy(assignments_, std::back_inserter(first), std::back_inserter(rest), isBasic);
        refuseUnheard(first, rest);
        CameraState state;
        state.camera = camera.camera;
        state.camera.httpPort = 80;
        say("the camera is in another subnet and its answers are lost; its web port becomes 80 unless http-port is "
            "given");
        const CameraState wanted = client::withAssignments(state, first);
        session.applyUnheard(state, wanted, watch(), end());
        if (!options_.noWait) verify(session, wanted, first);
        report(first, state, wanted);
        assignments_ = rest;
        if (!rest.empty()) change(session);
    }

    void refuseUnheard(const std::vector<Assignment>& first, const std::vector<Assignment>& rest) const {
        if (first.empty()) {
            throw Error(ErrorKind::NotFound,
                        "the camera's answers do not reach this machine; set its ipv4.address as well");
        }
        if (options_.noWait && !rest.empty()) {
            throw Error(ErrorKind::BadValue,
                        "the camera's answers do not reach this machine: what is not its name, port "
                        "or address can be set only when it is back, so not with --no-wait");
        }
    }

    // For programs, once it is done; people are told what the camera does meanwhile.
    void report(const std::vector<Assignment>& assignments, const CameraState& state, const CameraState& wanted) const {
        if (!common_.json) return;
        const auto output = jsonLines(std::cout);
        for (const Assignment& one : assignments) {
            const client::Setting& setting = *one.setting;
            const bool isChanged = !client::isSame(setting, state, wanted);
            const auto value = [&](const CameraState& from) {
                return setting.get != nullptr ? Record(setting.get(from)) : Record();
            };
            output->add({
                {"key",     setting.key  },
                {"before",  value(state) },
                {"after",   value(wanted)},
                {"changed", isChanged    }
            });
        }
    }

    client::Session::End end() const {
        return options_.noWait ? client::Session::End::Sent : client::Session::End::Waited;
    }

    client::Session::Watch watch() {
        return [this](const client::Progress& progress) { tell(progress); };
    }

    void tell(const client::Progress& progress) {
        const client::GroupFacts& facts = client::factsOf(progress.group);
        const auto longest = 3 * progress.away;
        const std::string effect = std::string(facts.name) + ": the camera " + facts.effect;
        switch (progress.step) {
            case client::Progress::Step::Sent:
                if (options_.noWait) say(effect + "; that takes about " + std::to_string(progress.away.count()) + " s");
                break;
            case client::Progress::Step::Away:
                if (!options_.noWait) {
                    say(effect + "; waiting up to " + std::to_string(longest.count()) + " s until it is back");
                }
                bar_->show(longest);
                break;
            case client::Progress::Step::Back:
                bar_->hide();
                break;
        }
    }

    static void verify(client::Session& session, const CameraState& wanted,
                       const std::vector<Assignment>& assignments) {
        const std::vector<std::string> different = session.verify(wanted, assignments);
        if (different.empty()) return;
        std::string keys;
        for (const std::string& key : different) keys += (keys.empty() ? "" : ", ") + key;
        throw Error(ErrorKind::Unverified, "the camera took the change, but does not show it: " + keys);
    }

    const SetOptions& options_;
    const CommonOptions& common_;
    std::vector<Assignment> assignments_;
    WaitBar* bar_ = nullptr;
};

int setSettings(const SetOptions& options, const CommonOptions& common) { return Setter(options, common).run(); }

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<SetOptions>();
    addCamera(app, options->camera);
    addNeededWords(app, "KEY=VALUE", options->assignments, "What to change; what is as asked stays untouched");
    addFlag(app, "--no-wait", options->noWait, "Do not wait until it is back, nor read again what was written");
    addFooter(app, [] { return settingsHelp() + "\n" + exitStatusHelp(); });
    return [options, &common] { return setSettings(*options, common); };
}

const Subcommand kSet = {"set", "Change settings of a camera.", kExamples, prepare};
