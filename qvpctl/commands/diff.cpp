// qvpctl diff: where cameras are no longer as a file has them.
#include <iostream>
#include <memory>

#include "client/text.h"
#include "qvpctl/commands.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/fleet/plan_records.h"
#include "qvpctl/stop_signal.h"
#include "qvpctl/tool.h"

static const char kExamples[] =
    "  qvpctl diff site.csv               what differs; nothing where all is as the file has it\n"
    "  qvpctl diff site.csv --exit-code   for a script: ends with 7 if something differs\n";

static const Column kColumns[] = {
    {"CAMERA",  "mac",    0},
    {"KEY",     "key",    0},
    {"WANTED",  "file",   0},
    {"PRESENT", "camera", 0},
};

struct DiffOptions {
    FleetOptions fleet;
    bool exitCode = false;
};

static Record rowOf(const Record& plan, const Record& change, bool json) {
    const Record row = json ? change : changeRow(plan, change);
    return {
        {"mac",    plan.at("mac")  },
        {"key",    change.at("key")},
        {"file",   row.at("after") },
        {"camera", row.at("before")},
    };
}

static int diff(const DiffOptions& options, const CommonOptions& common) {
    const StopSignal stop;
    Fleet fleet(options.fleet, common, stop.descriptor());
    fleet.read();
    fleet.tellInformation();
    fleet.refuseFaults(Fleet::Conflicts::Ignored);
    const auto output = tableOrJson(common.json, kColumns);
    size_t count = 0;
    for (const Reading& one : fleet.readings()) {
        if (one.error) say(client::macText(one.camera->mac) + ": " + one.error->what());
        const Record plan = planRecord(one);
        for (const Record& change : plan.at("changes")) output->add(rowOf(plan, change, common.json));
        count += plan.at("changes").size();
    }
    output->finish();
    const ExitCode worst = worstOf(fleet.readings());
    return worst == kSuccess && options.exitCode && count > 0 ? kDifferent : worst;
}

static Work prepare(CLI::App& app, const CommonOptions& common) {
    const auto options = std::make_shared<DiffOptions>();
    addFile(app, options->fleet);
    addFlag(app, "--exit-code", options->exitCode, "End with 7 if something differs");
    addParallel(app, options->fleet);
    addFooter(app, [] { return std::string(kFileHelp) + "\n\n" + exitStatusHelp(); });
    return [options, &common] { return diff(*options, common); };
}

const Subcommand kDiff = {"diff", "Show where cameras differ from a file.", kExamples, prepare};
