// qvpctl set: changes settings of one camera.
#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>

#include "client/error.h"
#include "client/session/heard.h"
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
        const StopSignal stop;
        signal(SIGPIPE, SIG_IGN);  // whoever reads the notes may go; the change is finished
        client::UdpLink network = linkWithReports(stop.descriptor());
        WaitBar link(network, common_);
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
        const auto isNamed = [&](std::string_view key) {
            return std::ranges::any_of(assignments_, [&](const Assignment& one) { return key == one.setting->key; });
        };
        std::ranges::copy_if(assignments_, std::back_inserter(alone), [&](const Assignment& one) {
            return std::string_view(one.setting->key) != "wifi.key" || isNamed("wifi.security");
        });
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
            tellQuirks(state, wanted);
            session.apply(state, wanted, watch(), end());
            if (!options_.noWait) verify(session, wanted, assignments_);
        }
        report(assignments_, state, wanted);
    }

    // What one would not expect of a change, where it comes true.
    void tellQuirks(const CameraState& state, const CameraState& wanted) const {
        for (const Assignment& one : assignments_) {
            const client::Setting& setting = *one.setting;
            const bool isDdns = std::string_view(setting.key).starts_with("ddns.");
            if (isDdns && !client::isSame(setting, state, wanted)) {
                say(std::string("dynamic DNS is now ") + (wanted.services->upnp ? "on" : "off") +
                    ", as upnp is: it has no switch of its own");
                break;
            }
        }
        const auto groups = client::changedGroups(state, wanted);
        const bool isWifi = std::ranges::find(groups, client::Group::Wifi) != groups.end();
        if (isWifi && !state.wifi->enable) {
            say("the camera takes the wireless settings, but its radio is off, and no request turns it on");
        }
    }

    // The rest of what is asked comes when it can answer.
    void changeUnheard(client::Session& session, const Found& camera) {
        std::vector<Assignment> first, rest;
        std::ranges::partition_copy(assignments_, std::back_inserter(first), std::back_inserter(rest),
                                    client::isForHeard);
        refuseUnheard(camera, rest);
        const CameraState state = client::heardState(camera);
        const std::string ungiven = namesOfUngiven(first);
        say("the camera is in another subnet and its answers are lost" +
            (ungiven.empty() ? "" : "; what it has cannot be read, so what is not given is set anew: " + ungiven));
        const CameraState wanted = client::withAssignments(state, first);
        session.applyUnheard(state, wanted, watch(), end());
        if (!options_.noWait) verify(session, wanted, first);
        report(first, state, wanted);
        assignments_ = rest;
        if (!rest.empty()) change(session);
    }

    void refuseUnheard(const Found& camera, const std::vector<Assignment>& rest) const {
        client::refuseHeard(camera, assignments_);
        if (!options_.noWait || rest.empty()) return;
        throw Error(ErrorKind::BadValue,
                    "the camera reports, but does not answer: what is not its name, port or address can be set only "
                    "when it is back, so not with --no-wait");
    }

    static std::string namesOfUngiven(const std::vector<Assignment>& first) {
        std::string names;
        for (const char* const key : {"http-port (becomes 80)", "ipv4.gateway (none)", "ipv4.dns (none)"}) {
            const auto isIt = [&](const Assignment& one) {
                return std::string_view(key).starts_with(std::string(one.setting->key) + " ");
            };
            if (std::ranges::none_of(first, isIt)) names += (names.empty() ? "" : ", ") + std::string(key);
        }
        return names;
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
        if (different.empty() && session.isOnlyHeard()) {
            say("seen by its report: its answers do not reach this machine");
        }
        if (different.empty()) return;
        std::string keys;
        for (const std::string& key : different) keys += (keys.empty() ? "" : ", ") + key;
        throw Error(ErrorKind::Unverified,
                    "the camera took the change, but does not show it: " + keys + "; 'qvpctl get' shows what it has");
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
