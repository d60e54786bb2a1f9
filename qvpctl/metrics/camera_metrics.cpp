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

static std::string infoOf(const Presence& report) {
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
        const CameraHistory first{"", report.sequence, interfaceIndex, report.address};
        found = cameras_.emplace(mac, first).first;
    } else if (isRestart(found->second, report, interfaceIndex)) {
        found->second.restarts++;
    }
    CameraHistory& camera = found->second;
    if (report.sequence != camera.sequence) camera.interfaceIndex = interfaceIndex;
    camera.sequence = report.sequence;
    camera.info = infoOf(report);
    camera.lastReport = static_cast<uint64_t>(arrival);
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
static constexpr Metric kInfo = {"qvp_camera_info", "gauge", "What the camera's last report tells."};
static constexpr Metric kLastReport = {"qvp_camera_last_report_timestamp_seconds", "gauge",
                                       "When the camera's last report came, in Unix time."};
static constexpr Metric kReports = {"qvp_camera_reports_total", "counter", "Reports of the camera."};
static constexpr Metric kRestarts = {"qvp_camera_restarts_total", "counter",
                                     "How often the camera's count of its reports began anew."};
static constexpr Metric kAddressChanges = {"qvp_camera_address_changes_total", "counter",
                                           "How often the camera had another address than before."};

static std::string headOf(const Metric& metric) {
    const std::string name = metric.name;
    return "# HELP " + name + " " + metric.help + "\n# TYPE " + name + " " + metric.type + "\n";
}

static std::string sampleOf(const Metric& metric, const std::string& labels, uint64_t value) {
    return metric.name + labels + " " + std::to_string(value) + "\n";
}

static std::string labelsOf(const std::string& mac, const std::string& more) {
    return "{mac=\"" + mac + "\"" + more + "}";
}

std::string CameraMetrics::text() const {
    std::string text = headOf(kCameras) + sampleOf(kCameras, "", cameras_.size());
    text += headOf(kIgnored) + sampleOf(kIgnored, "", ignored_);
    text += headOf(kInfo);
    for (const auto& [mac, camera] : cameras_) text += sampleOf(kInfo, labelsOf(mac, camera.info), 1);
    const auto add = [&](const Metric& metric, uint64_t CameraHistory::*value) {
        text += headOf(metric);
        for (const auto& [mac, camera] : cameras_) text += sampleOf(metric, labelsOf(mac, ""), camera.*value);
    };
    add(kLastReport, &CameraHistory::lastReport);
    add(kReports, &CameraHistory::reports);
    add(kRestarts, &CameraHistory::restarts);
    add(kAddressChanges, &CameraHistory::addressChanges);
    return text;
}
