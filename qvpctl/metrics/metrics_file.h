// The metrics of cameras in a file, as the textfile collector of Prometheus' node exporter wants it.
#pragma once

#include "client/link.h"
#include "qvpctl/metrics/camera_metrics.h"

class MetricsFile {
public:
    using Time = client::SteadyClock::time_point;

    // Writes it, so that "no camera" is another thing than "nobody looks". Throws Error Local when that cannot be done.
    MetricsFile(std::string path, Time now);

    // Takes it away: nobody keeps it up to date from now on.
    ~MetricsFile();

    MetricsFile(const MetricsFile&) = delete;
    MetricsFile& operator=(const MetricsFile&) = delete;

    void add(const client::Presence& report, unsigned interfaceIndex, time_t arrival);

    // When `keepUp` has to be called next: after a report within a second, else as a sign of life.
    Time due() const;

    // Writes the file if that is due. That it cannot be written is said once, and once that it can be again.
    void keepUp(Time now);

private:
    std::string path_;
    CameraMetrics metrics_;
    Time tried_;
    bool isBehind_ = false;
    bool isFailing_ = false;
};
