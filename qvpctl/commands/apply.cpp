// qvpctl apply: makes many cameras as a file has them.
#include <fcntl.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <memory>

#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/fleet/change_run.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/fleet/journal.h"
#include "qvpctl/fleet/plan_records.h"
#include "qvpctl/fleet/saved_plan.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/terminal_text.h"

using client::Error;
using client::ErrorKind;

static const char kExamples[] =
    "  qvpctl apply site.csv                 the first camera, and when that is well, the others\n"
    "  qvpctl apply site.toml                a policy: groups, ranges of addresses, and settings for all\n"
    "  qvpctl apply site.csv --parallel 32   many at a time: most of it is waiting for cameras\n"
    "  qvpctl apply monday                   what 'qvpctl plan site.csv -o monday' has shown, and nothing else\n"
    "  qvpctl apply site.csv --resume        go on after a run that was cut off\n"
    "  qvpctl apply site.csv --json          a line for each camera as soon as it is done\n";

struct ApplyOptions {
    FleetOptions fleet;
    std::string journal;  // empty: beside the file
    bool resume = false;

    std::string journalPath() const { return journal.empty() ? fleet.file + ".journal" : journal; }
};

class Applier {
public:
    Applier(const ApplyOptions& options, const CommonOptions& common)
        : options_(options), common_(common), plan_(SavedPlan::load(options.fleet.file)) {
        if (plan_) options_.fleet.file = plan_->file();
    }

    int run() {
        const LockedFile lock(options_.fleet.file, O_RDONLY);
        if (plan_) plan_->refuseOtherFile();
        const std::string digest = digestOfCameraFile(options_.fleet.file);
        const JournalContent old = checkJournal(digest);
        const StopSignal stop;
        signal(SIGPIPE, SIG_IGN);  // whoever reads the notes may go; the changes are finished
        Fleet fleet(options_.fleet, common_, stop.descriptor());
        fleet.read();
        fleet.refuseFaults(Fleet::Conflicts::Refused);
        fleet.tellInformation();
        takeOver(fleet.readings(), old);
        change(digest, stop.descriptor());
        sortAsIn(fleet.readings());
        printOutcomes(outcomes_, common_.json);
        if (isStopped(stop.descriptor())) throw Error(ErrorKind::Unverified, "stopped: the same with --resume goes on");
        return worstOf(outcomes_);
    }

private:
    // Before anything is read, asked or sent. What the run has done that this one goes on with.
    JournalContent checkJournal(const std::string& digest) const {
        const std::string path = options_.journalPath();
        if (!options_.resume && !std::filesystem::exists(path)) return {};
        const JournalContent content = readJournal(path);
        if (options_.resume && content.digest != digest) {
            throw Error(ErrorKind::BadValue, printable(path) + " is of another file, or the file was changed since; " +
                                                 "apply it without --resume");
        }
        if (!options_.resume && !content.isOver && content.digest == digest) {
            throw Error(ErrorKind::BadValue, printable(path) + " is of a run that was cut off: --resume goes on with " +
                                                 "it, and 'qvpctl revert' puts back what was there");
        }
        return options_.resume ? content : JournalContent();
    }

    std::string objectionTo(const Reading& reading, const JournalContent& old) const {
        const auto before = old.before.find(client::macText(reading.camera->mac));
        if (before != old.before.end() && before->second.wanted != digestOf(reading.camera->assignments)) {
            return "the policy gives it something else than when it was cut off: its groups have changed";
        }
        return plan_ ? plan_->objectionTo(reading) : "";
    }

    void takeOver(const std::vector<Reading>& readings, const JournalContent& old) {
        for (const Reading& one : readings) {
            const std::string objection = one.hasChanges() ? objectionTo(one, old) : "";
            if (one.hasChanges() && objection.empty()) {
                tasks_.push_back({*one.found, one.camera->assignments, one.plan->logins});
                continue;
            }
            Outcome outcome{one.camera->mac, {}, {}, one.error};
            if (!objection.empty()) outcome.error = Error(ErrorKind::BadValue, objection);
            if (one.found) outcome.camera = one.found->camera;
            note(outcome);
        }
    }

    void note(const Outcome& outcome) {
        printOutcome(outcome, common_.json);
        outcomes_.push_back(outcome);
    }

    void change(const std::string& digest, int stop) {
        if (tasks_.empty() && !options_.resume) return;
        const std::string path = options_.journalPath();
        Journal journal = options_.resume ? Journal::goOn(path) : Journal::begin(path, digest);
        const ChangeWatch watch = {[&](const client::CameraPlan& plan) { journal.noteBefore(plan); },
                                   [&](const Outcome& outcome) {
                                       journal.noteAfter(outcome);
                                       note(outcome);
                                   }};
        ChangeRun(common_, options_.fleet.parallel, stop, watch).run(tasks_, ChangeRun::First::Ahead);
        if (!isStopped(stop)) journal.noteEnd();
    }

    // They came as the cameras were done.
    void sortAsIn(const std::vector<Reading>& file) {
        const auto place = [&](const Outcome& one) {
            return std::ranges::find_if(file,
                                        [&](const Reading& row) { return client::isSame(row.camera->mac, one.mac); });
        };
        std::ranges::sort(outcomes_, {}, place);
    }

    ApplyOptions options_;
    const CommonOptions& common_;
    std::optional<SavedPlan> plan_;
    std::vector<ChangeTask> tasks_;
    std::vector<Outcome> outcomes_;
};

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<ApplyOptions>();
    addNeededWord(app, "FILE|PLAN", options->fleet.file,
                  "A table as spreadsheets save it (CSV), a policy (FILE.toml), or a plan of 'qvpctl plan -o PLAN'");
    addFlag(app, "--resume", options->resume, "Go on with a run that was cut off");
    addText(app, "--journal", options->journal, "PATH",
            "What was there is kept in this file (default FILE.journal, also for a plan of FILE)");
    addElsewhere(app, options->fleet);
    addParallel(app, options->fleet);
    addFooter(app, [] { return std::string(kFileHelp) + "\n\n" + exitStatusHelp(); });
    return [options, &common] { return Applier(*options, common).run(); };
}

const Subcommand kApply = {"apply", "Make cameras as a file has them.", kExamples, prepare};
