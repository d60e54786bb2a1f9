// What presence reports tell of cameras over time, as the text that Prometheus reads.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>

#include "client/presence.h"

// What is kept of one camera.
struct CameraHistory {
    std::string info;         // the labels of its info behind the first one
    uint16_t sequence;        // of the last report
    unsigned interfaceIndex;  // that brought this sequence first
    Ipv4 address;             // the last one it had
    uint64_t lastReport = 0;  // seconds of Unix time
    uint64_t reports = 0;
    uint64_t restarts = 0;
    uint64_t addressChanges = 0;
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
