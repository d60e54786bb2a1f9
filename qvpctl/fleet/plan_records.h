// A plan as it is shown.
#pragma once

#include "qvpctl/fleet/fleet.h"

// A camera of the file, with what would change.
Record planRecord(const Reading& reading);

// One of its changes as a row of a table.
Record changeRow(const Record& plan, const Record& change);

// The changes of a plan; the values of secrets are null.
Record changesOf(const std::vector<client::SettingChange>& changes);

// What the camera does with it, or why there is no plan.
std::string effectText(const Reading& reading);

struct PlanSummary {
    size_t cameras = 0, toChange = 0, unchanged = 0, unreachable = 0, failed = 0;
    std::chrono::seconds time{0};
    size_t parallel = 1;
};

PlanSummary summaryOf(const std::vector<Reading>& readings, size_t parallel);
Record summaryRecord(const PlanSummary& summary);
std::string summaryText(const PlanSummary& summary);

// What a file holds, for a help page.
extern const char kFileHelp[];
