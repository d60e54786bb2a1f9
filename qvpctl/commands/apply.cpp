// qvpctl apply: makes many cameras as a file has them.
#include <csignal>
#include <iostream>
#include <memory>

#include "qvpctl/commands.h"
#include "qvpctl/fleet/change_run.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/fleet/plan_records.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/tool.h"

static const char kExamples[] =
    "  qvpctl apply site.csv                 the first camera, and when that is well, the others\n"
    "  qvpctl apply site.csv --parallel 32   many at a time: most of it is waiting for cameras\n"
    "  qvpctl apply site.csv --json          a line for each camera as soon as it is done\n";

static Outcome outcomeOf(const Reading& reading) {
    Outcome outcome;
    outcome.mac = reading.camera->mac;
    if (reading.found) outcome.camera = reading.found->camera;
    outcome.error = reading.error;
    return outcome;
}

static void printAtOnce(const Outcome& outcome, bool json) {
    if (json) jsonLines(std::cout)->add(outcomeRecord(outcome));
}

static int apply(const FleetOptions& options, const CommonOptions& common) {
    const StopSignal stop;
    signal(SIGPIPE, SIG_IGN);  // whoever reads the notes may go; the changes are finished
    Fleet fleet(options, common, stop.descriptor());
    fleet.read();
    fleet.refuseFaults(Fleet::Conflicts::Refused);
    std::vector<Outcome> outcomes;
    std::vector<ChangeTask> tasks;
    for (const Reading& one : fleet.readings()) {
        if (one.hasChanges()) {
            tasks.push_back({*one.found, one.camera->assignments, one.plan->logins});
        } else {
            outcomes.push_back(outcomeOf(one));
            printAtOnce(outcomes.back(), common.json);
        }
    }
    const ChangeWatch watch = {[](const client::CameraPlan&) {},
                               [&](const Outcome& outcome) { printAtOnce(outcome, common.json); }};
    for (Outcome& one : ChangeRun(common, options.parallel, stop.descriptor(), watch).run(tasks)) {
        outcomes.push_back(std::move(one));
    }
    printOutcomes(outcomes, common.json);
    return worstOf(outcomes);
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<FleetOptions>();
    addFile(app, *options);
    addElsewhere(app, *options);
    addParallel(app, *options);
    addFooter(app, [] { return std::string(kFileHelp) + "\n\n" + exitStatusHelp(); });
    return [options, &common] { return apply(*options, common); };
}

const Subcommand kApply = {"apply", "Make cameras as a file has them.", kExamples, prepare};
