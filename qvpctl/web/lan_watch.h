// Listens to the cameras' reports, and searches when somebody asks for it, or when one is silent for too long.
#pragma once

#include <thread>

#include "client/udp_link.h"
#include "qvpctl/options.h"
#include "qvpctl/web/state.h"

class LanWatch {
public:
    // `stop` as UdpLink has it: the thread ends then. `tick` is called some times a second.
    LanWatch(WebState& state, const CommonOptions& common, int stop, std::function<void()> tick);

private:
    void run();
    void listen(client::Link& link);
    void search(client::Link& link);
    void tellSearch(bool isRunning, size_t found);
    void refreshInterfaces();
    client::UdpLink open();

    WebState& state_;
    const CommonOptions& common_;
    int stop_;
    std::function<void()> tick_;
    std::vector<client::Interface> interfaces_;
    client::SteadyClock::time_point refreshed_{}, searched_{};
    bool isAskedFor_ = false;  // by a camera that is new
    Record warnings_ = Record::array();
    std::string reportsWarning_;
    std::jthread thread_;  // the last one: it uses the others
};
