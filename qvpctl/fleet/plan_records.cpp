#include "qvpctl/fleet/plan_records.h"

#include <cstring>

#include "client/text.h"

const char kFileHelp[] =
    "The file:\n"
    "  A table in UTF-8 with commas or semicolons, as spreadsheets save it. The first line names the columns: mac, "
    "and\n"
    "  settings ('qvpctl help settings'). An empty cell leaves its setting alone. A secret is no text of the table "
    "but\n"
    "  a reference: file:PATH (its first line; looked for beside the table), env:NAME, or prompt. The other columns "
    "of\n"
    "  'qvpctl discover --csv', such as address and product, are for people and set nothing. In a cell, \\\\ is a\n"
    "  backslash and \\xHH a byte, as 'discover' and 'export' write them.\n"
    "  Of many cameras, the exit status is the highest that one of them comes to.\n"
    "\n"
    "The policy, a file whose name ends in .toml:\n"
    "  table = \"site.csv\"                              the table beside it; [[camera]] lists cameras here\n"
    "  [defaults]                                      settings of all the cameras\n"
    "  time.zone = \"Europe/Berlin\"\n"
    "  password = { file = \"new.txt\" }                 secrets: { file = }, { env = } or { prompt = true }\n"
    "  [[group]]                                       the cameras that fit each pattern\n"
    "  product = \"VC-2*\"                               of product, name and mac, as a shell has them\n"
    "  [group.set]\n"
    "  ipv4.address = \"192.168.10.20-69/24\"            a range, in the order of the table\n"
    "  A camera's own row goes before the groups, a later group before an earlier one, and all before the defaults.";

Record changesOf(const std::vector<client::SettingChange>& changes) {
    const auto value = [](const std::optional<std::string>& text) { return text ? Record(*text) : Record(); };
    Record list = Record::array();
    for (const client::SettingChange& one : changes) {
        list.push_back({
            {"key",    one.setting->key },
            {"before", value(one.before)},
            {"after",  value(one.after) }
        });
    }
    return list;
}

static const char* planResult(const Reading& reading) {
    if (reading.error) return resultOf(*reading.error);
    return reading.hasChanges() ? "to-change" : "unchanged";
}

static Record effectsOf(const Reading& reading) {
    Record effects = Record::array();
    if (!reading.plan) return effects;
    for (const client::Group group : reading.plan->groups) {
        const client::GroupFacts& facts = client::factsOf(group);
        effects.push_back({
            {"settings", facts.name        },
            {"effect",   facts.effect      },
            {"seconds",  facts.away.count()}
        });
    }
    return effects;
}

Record planRecord(const Reading& reading) {
    const bool isFound = reading.found.has_value();
    return {
        {"mac",     client::macText(reading.camera->mac)                                           },
        {"line",    reading.camera->place.line                                                     },
        {"address", isFound ? Record(client::addressText(reading.found->camera.address)) : Record()},
        {"name",    isFound ? Record(reading.found->camera.name) : Record()                        },
        {"result",  planResult(reading)                                                            },
        {"reason",  reading.error ? Record(reading.error->what()) : Record()                       },
        {"changes", reading.plan ? changesOf(reading.plan->changes) : Record::array()              },
        {"effects", effectsOf(reading)                                                             },
        {"seconds", reading.plan ? reading.plan->away.count() : 0                                  },
    };
}

Record changeRow(const Record& plan, const Record& change) {
    const client::Setting* setting = client::findSetting(change.at("key").get<std::string>());
    const Record hidden = setting->isSecret() ? Record("(secret)") : Record();
    return {
        {"mac",    plan.at("mac")                                              },
        {"key",    change.at("key")                                            },
        {"before", change.at("before").is_null() ? hidden : change.at("before")},
        {"after",  change.at("after").is_null() ? hidden : change.at("after")  },
    };
}

std::string effectText(const Reading& reading) {
    if (reading.error) return reading.error->what();
    std::string text;
    for (const client::Group group : reading.plan->groups) {
        text += (text.empty() ? "" : "; ") + std::string(client::factsOf(group).effect);
    }
    return text;
}

PlanSummary summaryOf(const std::vector<Reading>& readings, size_t parallel) {
    PlanSummary summary;
    summary.cameras = readings.size();
    summary.parallel = parallel;
    std::vector<std::chrono::seconds> times;
    for (const Reading& one : readings) {
        const bool isUnreachable = one.error && strcmp(resultOf(*one.error), "unreachable") == 0;
        summary.unreachable += isUnreachable ? 1 : 0;
        summary.failed += one.error && !isUnreachable ? 1 : 0;
        summary.toChange += one.hasChanges() ? 1 : 0;
        summary.unchanged += one.plan && !one.hasChanges() ? 1 : 0;
        if (one.hasChanges()) times.push_back(one.plan->away);
    }
    summary.time = client::timeFor(times, parallel);
    return summary;
}

Record summaryRecord(const PlanSummary& summary) {
    Record counts;
    counts["cameras"] = summary.cameras;
    counts["toChange"] = summary.toChange;
    counts["unchanged"] = summary.unchanged;
    counts["unreachable"] = summary.unreachable;
    counts["failed"] = summary.failed;
    counts["parallel"] = summary.parallel;
    counts["seconds"] = summary.time.count();
    return {
        {"summary", counts}
    };
}

std::string summaryText(const PlanSummary& summary) {
    std::string text = std::to_string(summary.cameras) + (summary.cameras == 1 ? " camera: " : " cameras: ");
    text += std::to_string(summary.toChange) + " to change, " + std::to_string(summary.unchanged) +
            " as the file has it, " + std::to_string(summary.unreachable) + " unreachable, " +
            std::to_string(summary.failed) + " failed";
    if (summary.toChange == 0) return text;
    return text + "; about " + std::to_string(summary.time.count()) + " s with " + std::to_string(summary.parallel) +
           " at a time";
}
