#include "qvpctl/fleet/change_run.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "client/text.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/fleet/crew.h"
#include "qvpctl/fleet/fleet.h"
#include "qvpctl/fleet/plan_records.h"

using client::CameraPlan;
using client::Error;
using client::ErrorKind;
using client::Found;

const char* Outcome::result() const {
    if (error) return resultOf(*error);
    return changes.empty() ? "unchanged" : "changed";
}

ChangeRun::ChangeRun(const CommonOptions& common, size_t parallel, int stop, ChangeWatch watch)
    : common_(common), parallel_(parallel), stop_(stop), watch_(std::move(watch)) {}

// What the network lost is tried again; what the camera said stands.
static bool canBeTriedAgain(const Error& error) {
    return error.kind() == ErrorKind::NotFound || error.kind() == ErrorKind::Local;
}

// Without a journal nothing is changed, so this is the end of the run and not of one camera.
struct NotNoted {
    Error error;
};

static void noteBefore(const ChangeWatch& watch, const CameraPlan& plan) {
    try {
        watch.before(plan);
    } catch (const Error& error) {
        throw NotNoted{error};
    }
}

// What was changed before the network failed counts as changed, too.
void ChangeRun::tryToChange(client::CameraJob& job, Found found, const ChangeTask& task, size_t index,
                            Outcome& outcome) {
    const CameraPlan plan = job.look(found, task.assignments);
    if (!plan.changes.empty()) {
        noteBefore(watch_, plan);
        if (outcome.changes.empty()) outcome.changes = plan.changes;
        job.change(plan, [&](const client::Progress& progress) {
            progress_->tell(index, progress);
            watch_.step(outcome.mac, progress);
        });
    }
    outcome.camera = plan.wanted.camera;
}

static Outcome untried(const ChangeTask& task, const Error& why) {
    return {.mac = task.found.camera.mac, .camera = task.found.camera, .changes = {}, .error = why, .isTried = false};
}

Outcome ChangeRun::change(const ChangeTask& task, size_t index) {
    constexpr int kTries = 3;
    constexpr std::chrono::seconds kPatience(31);  // a camera that does not answer reports in that time
    if (watch_.isEnough()) return untried(task, Error(ErrorKind::Local, "not tried: stopped"));
    Outcome outcome{task.found.camera.mac, task.found.camera, {}, {}};
    const auto work = [&](client::CameraJob& job) {
        for (int attempt = 1;; attempt++) {
            try {
                const auto found = attempt == 1 ? task.found : job.find(outcome.mac, task.found.interface, kPatience);
                if (!found) throw Error(ErrorKind::NotFound, "the camera is no longer heard");
                tryToChange(job, *found, task, index, outcome);
                return;
            } catch (const Error& error) {
                if (!canBeTriedAgain(error) || attempt == kTries || isStopped(stop_)) throw;
                sayFromCrew(client::macText(outcome.mac) + ": once more: " + error.what());
            }
        }
    };
    try {
        withJob(common_, task.logins, stop_, work);
    } catch (const Error& error) {
        outcome.error = error;
    }
    return outcome;
}

void ChangeRun::finish(Outcome outcome, size_t index) {
    const std::string result = outcome.result();
    progress_->finish(index, result == "changed" ? "verified" : result);
    const std::scoped_lock lock(mutex_);
    watch_.after(outcome);
    outcomes_[index] = std::move(outcome);
}

std::vector<Outcome> ChangeRun::run(const std::vector<ChangeTask>& tasks, First first) {
    try {
        return runNoted(tasks, first);
    } catch (const NotNoted& failure) {
        throw Error(failure.error);
    }
}

std::vector<Outcome> ChangeRun::runNoted(const std::vector<ChangeTask>& tasks, First first) {
    if (tasks.empty()) return {};
    std::vector<Mac> macs;
    outcomes_.clear();
    for (const ChangeTask& task : tasks) {
        macs.push_back(task.found.camera.mac);
        outcomes_.push_back(untried(task, Error(ErrorKind::Local, "not tried: stopped")));
    }
    FleetProgress progress(macs, FleetProgress::formFor(common_.json));
    progress_ = &progress;
    const size_t ahead = first == First::Ahead ? 1 : 0;
    if (ahead > 0) finish(change(tasks[0], 0), 0);
    if (ahead > 0 && outcomes_[0].error) {
        const std::string why = "not tried: the first camera, " + client::macText(macs[0]) + ", was not changed";
        for (size_t i = 1; i < tasks.size(); i++) finish(untried(tasks[i], Error(ErrorKind::Local, why)), i);
        return outcomes_;
    }
    inParallel(tasks.size() - ahead, parallel_, stop_,
               [&](size_t i) { finish(change(tasks[i + ahead], i + ahead), i + ahead); });
    return outcomes_;
}

Record outcomeRecord(const Outcome& outcome) {
    const bool isKnown = outcome.camera.has_value();
    return {
        {"mac",     client::macText(outcome.mac)                                             },
        {"address", isKnown ? Record(client::addressText(outcome.camera->address)) : Record()},
        {"name",    isKnown ? Record(outcome.camera->name) : Record()                        },
        {"result",  outcome.result()                                                         },
        {"reason",  outcome.error ? Record(outcome.error->what()) : Record()                 },
        {"changes", changesOf(outcome.changes)                                               },
    };
}

Record outcomeSummary(const std::vector<Outcome>& outcomes) {
    Record counts;
    counts["cameras"] = outcomes.size();
    for (const char* result : {"unchanged", "changed", "failed", "unreachable", "unverified"}) {
        const auto isIt = [&](const Outcome& one) { return std::string(one.result()) == result; };
        counts[result] = std::ranges::count_if(outcomes, isIt);
    }
    return counts;
}

std::string outcomeText(const Record& summary) {
    std::string text;
    for (const auto& [name, count] : summary.items()) {
        const std::string number = count.dump();
        if (name == "cameras") {
            text = number + (number == "1" ? " camera:" : " cameras:");
        } else if (number != "0") {
            text += text.ends_with(":") ? " " : ", ";
            text.append(number).append(" ").append(name);
        }
    }
    const bool isSame = summary.at("cameras") == summary.at("unchanged");
    return isSame ? text + "; nothing had to change" : text;
}

int worstOf(const std::vector<Outcome>& outcomes) {
    int worst = kSuccess;
    for (const Outcome& one : outcomes) {
        if (one.error && one.isTried) worst = std::max<int>(worst, exitCodeOf(one.error->kind()));
    }
    return worst;
}

static const Column kColumns[] = {
    {"CAMERA",  "mac",     0, Look::Plain  },
    {"ADDRESS", "address", 0, Look::Plain  },
    {"NAME",    "name",    0, Look::Plain  },
    {"RESULT",  "result",  0, Look::Plain  },
    {"WHY",     "reason",  0, Look::Warning},
};

void printOutcome(const Outcome& outcome, bool json) {
    if (!json) return;
    try {
        jsonLines(std::cout)->add(outcomeRecord(outcome));
    } catch (const Error&) {  // the summary fails, too, and says why
    }
}

void printOutcomes(const std::vector<Outcome>& outcomes, bool json) {
    const Record summary = outcomeSummary(outcomes);
    if (json) {
        jsonLines(std::cout)->add({
            {"summary", summary}
        });
        return;
    }
    const auto output = table(std::cout, kColumns, outputLooks());
    for (const Outcome& one : outcomes) output->add(outcomeRecord(one));
    output->finish();
    std::cout << outcomeText(summary) << "\n" << std::flush;
}
