#include "qvpctl/fleet/saved_plan.h"

#include <algorithm>
#include <filesystem>

#include "client/text.h"
#include "qvpctl/fleet/journal.h"
#include "qvpctl/fleet/plan_records.h"
#include "qvpctl/terminal_text.h"
#include "qvpctl/whole_file.h"

namespace fs = std::filesystem;
using client::Error;
using client::ErrorKind;

static constexpr std::string_view kOpening = "{\"plan\":1,";

// The table itself, say.
static void refuseOtherThanPlan(const std::string& path) {
    if (!fs::is_regular_file(path) || fs::is_empty(path) || readWhole(path).starts_with(kOpening)) return;
    throw Error(ErrorKind::Local, printable(path) + " is there already, and is no plan: give the plan another name");
}

void SavedPlan::save(const std::string& path, const std::string& file, const std::vector<Reading>& readings) {
    Record cameras = Record::object(), wanted = Record::object();
    for (const Reading& one : readings) {
        if (!one.plan) continue;
        const std::string mac = client::macText(one.camera->mac);
        cameras[mac] = changesOf(one.plan->changes);
        wanted[mac] = digestOf(one.camera->assignments);
    }
    refuseOtherThanPlan(path);
    const std::string text = jsonLine({
        {"plan",    1                          },
        {"file",    fs::absolute(file).string()},
        {"digest",  digestOfCameraFile(file)   },
        {"wanted",  wanted                     },
        {"cameras", cameras                    }
    });
    writeWhole(path, text);
}

std::optional<SavedPlan> SavedPlan::load(const std::string& path) {
    const std::string text = readWhole(path);
    if (!text.starts_with(kOpening)) return std::nullopt;
    try {
        const Record record = Record::parse(text);
        SavedPlan plan;
        plan.file_ = record.at("file").get<std::string>();
        plan.digest_ = record.at("digest").get<std::string>();
        plan.cameras_ = record.at("cameras").get<std::map<std::string, Record>>();
        plan.wanted_ = record.at("wanted").get<std::map<std::string, std::string>>();
        return plan;
    } catch (const Record::exception&) {
        throw Error(ErrorKind::BadValue, printable(path) + " is a plan that is damaged");
    }
}

void SavedPlan::refuseOtherFile() const {
    if (digestOfCameraFile(file_) == digest_) return;
    throw Error(ErrorKind::BadValue, printable(file_) + " was changed since the plan was made");
}

// What was changed by a run of this plan that was cut off is as wanted by now, and no objection.
std::string SavedPlan::objectionTo(const Reading& reading) const {
    const std::string mac = client::macText(reading.camera->mac);
    const auto planned = cameras_.find(mac);
    const auto wanted = wanted_.find(mac);
    if (planned == cameras_.end() || wanted == wanted_.end()) return "it could not be read when the plan was made";
    if (wanted->second != digestOf(reading.camera->assignments)) {
        return "the policy gives it something else than when the plan was made: its groups have changed";
    }
    std::string keys;
    for (const Record& change : changesOf(reading.plan->changes)) {
        // As text: bytes of a camera that are not UTF-8 were written as something else.
        const auto isIt = [&](const Record& one) { return jsonLine(one) == jsonLine(change); };
        if (std::ranges::any_of(planned->second, isIt)) continue;
        keys += (keys.empty() ? "" : ", ") + change.at("key").get<std::string>();
    }
    return keys.empty() ? "" : "it has changed since the plan was made: " + keys;
}
