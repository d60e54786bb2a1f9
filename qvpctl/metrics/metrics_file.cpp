#include "qvpctl/metrics/metrics_file.h"

#include <unistd.h>

#include <utility>

#include "client/error.h"
#include "qvpctl/tool.h"
#include "qvpctl/whole_file.h"

static constexpr std::chrono::seconds kPause(1);
static constexpr std::chrono::seconds kSignOfLife(30);

MetricsFile::MetricsFile(std::string path, Time now) : path_(std::move(path)), tried_(now) {
    writeWhole(path_, metrics_.text());
}

MetricsFile::~MetricsFile() { unlink(path_.c_str()); }

void MetricsFile::add(const client::Presence& report, unsigned interfaceIndex, time_t arrival) {
    metrics_.add(report, interfaceIndex, arrival);
    isBehind_ = true;
}

MetricsFile::Time MetricsFile::due() const { return tried_ + (isBehind_ ? kPause : kSignOfLife); }

void MetricsFile::keepUp(Time now) {
    if (now < due()) return;
    tried_ = now;
    try {
        writeWhole(path_, metrics_.text());
        if (isFailing_) say(path_ + " is written again");
        isBehind_ = isFailing_ = false;
    } catch (const client::Error& error) {
        if (!isFailing_) say(error.what());
        isBehind_ = isFailing_ = true;
    }
}
