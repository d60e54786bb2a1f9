#include "qvpctl/metrics/camera_metrics.h"

#include "client/text.h"
#include "qvpctl/output.h"

using client::addressText;
using client::macText;
using client::Presence;

// Reports in a row that may be lost while the counter begins anew after its last number: those of an hour.
static constexpr uint16_t kMostLost = 120;

// A report that two interfaces bring is one. A first report after a first report is a restart, too.
static bool isRestart(const CameraHistory& camera, const Presence& report, unsigned interfaceIndex) {
    const bool isRepeated = report.sequence == camera.sequence;
    if (isRepeated) return report.sequence == 0 && interfaceIndex == camera.interfaceIndex;
    const auto ahead = static_cast<uint16_t>(report.sequence - camera.sequence);
    return report.sequence < camera.sequence && ahead > kMostLost;
}

static constexpr char kNoText[] = "\xEF\xBF\xBD";  // U+FFFD

// A camera's text between the quotes of a label. What is not UTF-8 becomes what JSON makes of it, and so do control
// characters: people look at the file on a terminal.
static std::string labelText(const std::string& bytes) {
    const auto text = Record::parse(jsonLine(bytes)).get<std::string>();
    std::string result;
    for (size_t i = 0; i < text.size(); i++) {
        const auto byte = static_cast<uint8_t>(text[i]);
        const bool isWideControl = byte == 0xC2 && static_cast<uint8_t>(text[i + 1]) < 0xA0;
        if (byte == '\n') {
            result += "\\n";
        } else if (byte == '\\' || byte == '"') {
            result += {'\\', text[i]};
        } else if (byte < 0x20 || byte == 0x7F || isWideControl) {
            result += kNoText;
            i += isWideControl ? 1 : 0;
        } else {
            result += text[i];
        }
    }
    return result;
}

static std::string labelsOf(const Presence& report) {
    return ",name=\"" + labelText(report.name) + "\",product=\"" + labelText(report.product) + "\",firmware=\"" +
           labelText(report.firmware) + "\",hardware=\"" + labelText(report.hardware) + "\",address=\"" +
           addressText(report.address) + "\"";
}

// While a camera waits for an address it has none; that is no change.
static void takeAddress(CameraHistory& camera, Ipv4 address) {
    if (!client::isSet(address) || client::isSame(address, camera.address)) return;
    if (client::isSet(camera.address)) camera.addressChanges++;
    camera.address = address;
}

void CameraMetrics::add(const Presence& report, unsigned interfaceIndex, time_t arrival) {
    const std::string mac = macText(report.mac);
    auto found = cameras_.find(mac);
    if (found == cameras_.end() && cameras_.size() == kMostCameras) {
        ignored_++;
        return;
    }
    if (found == cameras_.end()) {
        const CameraHistory first{"", report.sequence, interfaceIndex, report.address, arrival, 0, 0, 0};
        found = cameras_.emplace(mac, first).first;
    } else if (isRestart(found->second, report, interfaceIndex)) {
        found->second.restarts++;
    }
    CameraHistory& camera = found->second;
    if (report.sequence != camera.sequence) camera.interfaceIndex = interfaceIndex;
    camera.sequence = report.sequence;
    camera.labels = labelsOf(report);
    camera.lastReport = arrival;
    camera.reports++;
    takeAddress(camera, report.address);
}

struct Metric {
    const char* name;
    const char* type;
    const char* help;
};

static constexpr Metric kCameras = {"qvp_cameras", "gauge", "Cameras heard since the start."};
static constexpr Metric kIgnored = {"qvp_reports_ignored_total", "counter",
                                    "Reports of cameras that are not kept, as there are too many."};

struct CameraMetric {
    Metric metric;
    uint64_t (*value)(const CameraHistory& camera);
    bool isInfo = false;
};

static const CameraMetric kOfEach[] = {
    {{"qvp_camera_info", "gauge", "What the camera's last report tells."},
     [](const CameraHistory&) { return uint64_t{1}; },
     true},
    {{"qvp_camera_last_report_timestamp_seconds", "gauge", "When the camera's last report came, in Unix time."},
     [](const CameraHistory& camera) { return static_cast<uint64_t>(camera.lastReport); }},
    {{"qvp_camera_reports_total", "counter", "Reports of the camera."},
     [](const CameraHistory& camera) { return camera.reports; }                                         },
    {{"qvp_camera_restarts_total", "counter", "How often the camera's count of its reports began anew."},
     [](const CameraHistory& camera) { return camera.restarts; }},
    {{"qvp_camera_address_changes_total", "counter", "How often the camera had another address than before."},
     [](const CameraHistory& camera) { return camera.addressChanges; }                                    },
};

static std::string headOf(const Metric& metric) {
    const std::string name = metric.name;
    return "# HELP " + name + " " + metric.help + "\n# TYPE " + name + " " + metric.type + "\n";
}

static std::string lineOf(const Metric& metric, uint64_t value) {
    return headOf(metric) + metric.name + " " + std::to_string(value) + "\n";
}

std::string CameraMetrics::text() const {
    std::string text = lineOf(kCameras, cameras_.size()) + lineOf(kIgnored, ignored_);
    for (const CameraMetric& one : kOfEach) {
        text += headOf(one.metric);
        for (const auto& [mac, camera] : cameras_) {
            const std::string more = one.isInfo ? camera.labels : "";
            text += one.metric.name + ("{mac=\"" + mac) + "\"" + more + "} " + std::to_string(one.value(camera)) + "\n";
        }
    }
    return text;
}
