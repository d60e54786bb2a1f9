// How far a run of many cameras is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "qvpctl/fleet/change_run.h"

class WebRun {
public:
    WebRun(std::string id, const std::vector<Mac>& cameras);

    void step(Mac camera, const client::Progress& progress);
    void finish(const Outcome& outcome);
    void stop();
    void end();

    bool isOver() const { return isOver_; }
    bool isStopped() const { return isStopped_; }
    const std::vector<Mac>& cameras() const { return cameras_; }
    std::vector<Outcome> outcomes() const;
    Record record() const;

private:
    struct Row {
        std::string step = "waiting";
        std::optional<Outcome> outcome;
    };

    Row& rowOf(Mac camera);

    std::string id_;
    std::vector<Mac> cameras_;
    std::vector<Row> rows_;
    bool isStopped_ = false, isOver_ = false;
};
