// qvpctl plan: what a file of cameras would change.
#include <iostream>
#include <memory>

#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/fleet/plan_records.h"
#include "qvpctl/fleet/saved_plan.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/tool.h"

static const char kExamples[] =
    "  qvpctl plan site.csv                        what would change, and for how long the cameras are away\n"
    "  qvpctl plan site.toml                       the same for a policy: groups, ranges of addresses, defaults\n"
    "  qvpctl plan site.csv -o monday              and 'qvpctl apply monday' makes that so, and nothing else\n"
    "  qvpctl discover --csv >site.csv             makes a table to begin with\n"
    "  qvpctl plan site.csv --exit-code >plan.txt  for a script: ends with 7 if something would change\n";

static const Column kChanges[] = {
    {"CAMERA", "mac",    0},
    {"KEY",    "key",    0},
    {"FROM",   "before", 0},
    {"TO",     "after",  0},
};

static const Column kCameras[] = {
    {"CAMERA",  "mac",     0, Look::Plain  },
    {"ADDRESS", "address", 0, Look::Plain  },
    {"NAME",    "name",    0, Look::Plain  },
    {"RESULT",  "result",  0, Look::Plain  },
    {"SECONDS", "seconds", 0, Look::Plain  },
    {"WHY",     "why",     0, Look::Warning},
};

struct PlanOptions {
    FleetOptions fleet;
    bool exitCode = false;
    std::string output;  // empty: nowhere
};

static void printTables(const Fleet& fleet) {
    const auto changes = table(std::cout, kChanges, outputLooks());
    const auto cameras = table(std::cout, kCameras, outputLooks());
    bool areThereChanges = false;
    for (const Reading& one : fleet.readings()) {
        Record record = planRecord(one);
        for (const Record& change : record["changes"]) {
            changes->add(changeRow(record, change));
            areThereChanges = true;
        }
        record["why"] = effectText(one);
        cameras->add(record);
    }
    changes->finish();
    if (areThereChanges) std::cout << "\n";
    cameras->finish();
}

static int plan(const PlanOptions& options, const CommonOptions& common) {
    const StopSignal stop;
    Fleet fleet(options.fleet, common, stop.descriptor());
    fleet.read();
    fleet.refuseFaults(Fleet::Conflicts::Refused);
    fleet.tellInformation();
    if (!options.output.empty()) SavedPlan::save(options.output, options.fleet.file, fleet.readings());
    const PlanSummary summary = summaryOf(fleet.readings(), options.fleet.parallel);
    if (common.json) {
        const auto lines = jsonLines(std::cout);
        for (const Reading& one : fleet.readings()) lines->add(planRecord(one));
        lines->add(summaryRecord(summary));
    } else {
        printTables(fleet);
        std::cout << summaryText(summary) << "\n" << std::flush;
    }
    const ExitCode worst = worstOf(fleet.readings());
    return worst == kSuccess && options.exitCode && summary.toChange > 0 ? kDifferent : worst;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<PlanOptions>();
    addFile(app, options->fleet);
    addFlag(app, "--exit-code", options->exitCode, "End with 7 if something would change");
    addText(app, "-o,--output", options->output, "PLAN", "Write the plan into this file, for 'qvpctl apply PLAN'");
    addElsewhere(app, options->fleet);
    addParallel(app, options->fleet);
    addFooter(app, [] { return std::string(kFileHelp) + "\n\n" + exitStatusHelp(); });
    return [options, &common] { return plan(*options, common); };
}

const Subcommand kPlan = {"plan", "Show what a file of cameras would change.", kExamples, prepare};
