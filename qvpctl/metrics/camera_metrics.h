// What presence reports tell of cameras over time, as the text that Prometheus reads.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>

#include "client/presence.h"

// What is kept of one camera.
struct CameraHistory {
    std::string labels;       // of its info, fit for the file
    uint16_t sequence;        // of the last report
    unsigned interfaceIndex;  // that brought this sequence first
    Ipv4 address;             // the last one it had
    time_t lastReport;
    uint64_t reports;
    uint64_t restarts;
    uint64_t addressChanges;
};

class CameraMetrics {
public:
    // Every machine of the network can make up reports, so there is an end: the first ones are kept.
    static constexpr size_t kMostCameras = 10000;

    // A report that came in by that interface.
    void add(const client::Presence& report, unsigned interfaceIndex, time_t arrival);

    std::string text() const;

private:
    std::map<std::string, CameraHistory> cameras_;  // by their MACs
    uint64_t ignored_ = 0;
};
