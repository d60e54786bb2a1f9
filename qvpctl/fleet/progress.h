// What many cameras are doing, for people: a line each on a terminal that is drawn anew, else a line for each step.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "client/session/session.h"
#include "protocol/bytes.h"

class FleetProgress {
public:
    enum class Form { Lines, Terminal, None };

    FleetProgress(std::vector<Mac> cameras, Form form);
    ~FleetProgress();

    // Where standard error is a terminal that can, the terminal; nothing beside JSON.
    static Form formFor(bool json);

    // From any thread, about the camera of that index.
    void tell(size_t camera, const client::Progress& progress);
    void finish(size_t camera, const std::string& result);

private:
    struct Row {
        std::string mac;
        std::string step = "waiting";
        bool isActive = false;
        std::chrono::seconds expected{0};  // how long it may be away; 0: it is not
        std::chrono::steady_clock::time_point since;
    };

    void set(size_t camera, const std::string& step, bool isActive, std::chrono::seconds expected);
    void tick();
    void draw();
    void erase();
    std::string textOf(const Row& row) const;

    Form form_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool isOver_ = false;
    size_t drawn_ = 0;  // lines on the terminal
    size_t done_ = 0;
    std::vector<Row> rows_;
    std::jthread ticker_;
};
