#include "qvpctl/web/fleet_progress.h"

#include <algorithm>
#include <utility>

#include "client/text.h"

WebRun::WebRun(std::string id, const std::vector<Mac>& cameras)
    : id_(std::move(id)), cameras_(cameras), rows_(cameras.size()) {}

WebRun::Row& WebRun::rowOf(Mac camera) {
    const auto found = std::ranges::find_if(cameras_, [&](Mac one) { return client::isSame(one, camera); });
    return rows_.at(static_cast<size_t>(found - cameras_.begin()));
}

void WebRun::step(Mac camera, const client::Progress& progress) {
    switch (progress.step) {
        case client::Progress::Step::Sent:
            rowOf(camera).step = "sent";
            break;
        case client::Progress::Step::Away:
            rowOf(camera).step = "away";
            break;
        case client::Progress::Step::Back:
            rowOf(camera).step = "back";
            break;
    }
}

void WebRun::finish(const Outcome& outcome) {
    Row& row = rowOf(outcome.mac);
    row.outcome = outcome;
    const std::string result = outcome.result();
    row.step = result == "changed" || result == "unchanged" ? "verified" : result == "unverified" ? result : "failed";
}

void WebRun::stop() { isStopped_ |= !isOver_; }

void WebRun::end() { isOver_ = true; }

std::vector<Outcome> WebRun::outcomes() const {
    std::vector<Outcome> outcomes;
    for (const Row& row : rows_) {
        if (row.outcome) outcomes.push_back(*row.outcome);
    }
    return outcomes;
}

// A camera that is not done has no result yet.
static Record waitingRecord(Mac camera) {
    Record record = outcomeRecord({camera, {}, {}, {}});
    record["result"] = nullptr;
    return record;
}

Record WebRun::record() const {
    Record cameras = Record::array();
    for (size_t i = 0; i < rows_.size(); i++) {
        Record record = rows_[i].outcome ? outcomeRecord(*rows_[i].outcome) : waitingRecord(cameras_[i]);
        record["stage"] = rows_[i].step;
        cameras.push_back(std::move(record));
    }
    const std::vector<Outcome> done = outcomes();
    const auto tried = std::ranges::count_if(done, &Outcome::isTried);
    return {
        {"id",      id_                                 },
        {"stage",   !isOver_     ? "running"
                  : isStopped_ ? "stopped"
                               : "done"},
        {"total",   rows_.size()                        },
        {"done",    tried                               },
        {"cameras", cameras                             },
        {"summary", outcomeSummary(done)                },
    };
}
