// Changing many cameras: the first alone, then the others, several at a time.
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "client/error.h"
#include "client/fleet/camera_job.h"
#include "qvpctl/fleet/progress.h"
#include "qvpctl/options.h"
#include "qvpctl/output.h"

struct ChangeTask {
    client::Found found;
    std::vector<client::Assignment> assignments;
    std::vector<client::Login> logins;
};

// How it ended for one camera.
struct Outcome {
    Mac mac{};
    std::optional<client::Camera> camera;  // as it is now; none: it was not heard
    std::vector<client::SettingChange> changes;
    std::optional<client::Error> error;
    bool isTried = true;  // false: it was its turn no more

    const char* result() const;  // "unchanged", "changed", "failed", "unreachable" or "unverified"
};

struct ChangeWatch {
    std::function<void(const client::CameraPlan&)>
        before;                                 // a camera is about to be changed; throws to keep it from that
    std::function<void(const Outcome&)> after;  // one at a time
    std::function<void(Mac, const client::Progress&)> step = [](Mac, const client::Progress&) {};
    std::function<bool()> isEnough = [] { return false; };  // those that have not begun are not tried any more
};

class ChangeRun {
public:
    ChangeRun(const CommonOptions& common, size_t parallel, int stop, ChangeWatch watch);

    // Each of them in the order of the tasks. One that goes ahead alone keeps the others from being tried if it fails.
    enum class First { Ahead, WithTheOthers };
    std::vector<Outcome> run(const std::vector<ChangeTask>& tasks, First first);

private:
    std::vector<Outcome> runNoted(const std::vector<ChangeTask>& tasks, First first);
    Outcome change(const ChangeTask& task, size_t index);
    void tryToChange(client::CameraJob& job, client::Found found, const ChangeTask& task, size_t index,
                     Outcome& outcome);
    void finish(Outcome outcome, size_t index);

    const CommonOptions& common_;
    size_t parallel_;
    int stop_;
    ChangeWatch watch_;
    FleetProgress* progress_ = nullptr;
    std::mutex mutex_;
    std::vector<Outcome> outcomes_;
};

Record outcomeRecord(const Outcome& outcome);

// Of all cameras: the numbers of each result.
Record outcomeSummary(const std::vector<Outcome>& outcomes);
std::string outcomeText(const Record& summary);

// The highest status that one of them comes to.
int worstOf(const std::vector<Outcome>& outcomes);

// With JSON, prints it at once. Whoever reads that may go: the run goes on, and its end tells.
void printOutcome(const Outcome& outcome, bool json);

// Prints them as a table; with JSON each was printed when it was there, and the summary is left.
void printOutcomes(const std::vector<Outcome>& outcomes, bool json);
