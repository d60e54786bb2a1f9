#include "qvpctl/metrics/camera_metrics.h"

#include <gmock/gmock.h>

#include <algorithm>

using client::Presence;
using testing::HasSubstr;

static constexpr unsigned kEth0 = 2, kEth1 = 3;

static Presence report(uint16_t sequence, uint8_t lastOctet = 10) {
    Presence presence{};
    presence.sequence = sequence;
    presence.mac = {{0x02, 0x00, 0x5E, 0x10, 0x00, 0xAF}};
    presence.address = {{192, 0, 2, lastOctet}};
    presence.name = "Gate";
    presence.product = "VC-2000";
    presence.firmware = "1.05";
    presence.hardware = "A1";
    return presence;
}

static Presence without(Presence presence, Ipv4 Presence::*field) {
    presence.*field = {};
    return presence;
}

class CameraMetricsTest : public testing::Test {
protected:
    // What stands behind a name; "" when there is no such line, or more than one.
    std::string valueOf(const std::string& name) const {
        const std::string text = "\n" + metrics_.text();
        const size_t at = text.find("\n" + name + " ");
        if (at == text.npos || text.find("\n" + name + " ", at + 1) != text.npos) return "";
        const size_t start = at + name.size() + 2;
        return text.substr(start, text.find('\n', start) - start);
    }

    std::string ofTheCamera(const std::string& name) const {
        return valueOf("qvp_camera_" + name + "{mac=\"02:00:5e:10:00:af\"}");
    }

    void hear(std::initializer_list<uint16_t> sequences, unsigned interfaceIndex = kEth0) {
        for (const uint16_t sequence : sequences) metrics_.add(report(sequence), interfaceIndex, 1700000000);
    }

    CameraMetrics metrics_;
};

TEST_F(CameraMetricsTest, OfNoCameraTheNumberIsThere) {
    EXPECT_EQ(valueOf("qvp_cameras"), "0");
    EXPECT_EQ(valueOf("qvp_reports_ignored_total"), "0");
    EXPECT_EQ(metrics_.text().find('{'), std::string::npos);
}

TEST_F(CameraMetricsTest, ACameraToTheLetter) {
    metrics_.add(report(7), kEth0, 1700000000);
    EXPECT_EQ(metrics_.text(),
              "# HELP qvp_cameras Cameras heard since the start.\n"
              "# TYPE qvp_cameras gauge\n"
              "qvp_cameras 1\n"
              "# HELP qvp_reports_ignored_total Reports of cameras that are not kept, as there are too many.\n"
              "# TYPE qvp_reports_ignored_total counter\n"
              "qvp_reports_ignored_total 0\n"
              "# HELP qvp_camera_info What the camera's last report tells.\n"
              "# TYPE qvp_camera_info gauge\n"
              "qvp_camera_info{mac=\"02:00:5e:10:00:af\",name=\"Gate\",product=\"VC-2000\",firmware=\"1.05\","
              "hardware=\"A1\",address=\"192.0.2.10\"} 1\n"
              "# HELP qvp_camera_last_report_timestamp_seconds When the camera's last report came, in Unix time.\n"
              "# TYPE qvp_camera_last_report_timestamp_seconds gauge\n"
              "qvp_camera_last_report_timestamp_seconds{mac=\"02:00:5e:10:00:af\"} 1700000000\n"
              "# HELP qvp_camera_reports_total Reports of the camera.\n"
              "# TYPE qvp_camera_reports_total counter\n"
              "qvp_camera_reports_total{mac=\"02:00:5e:10:00:af\"} 1\n"
              "# HELP qvp_camera_restarts_total How often the camera's count of its reports began anew.\n"
              "# TYPE qvp_camera_restarts_total counter\n"
              "qvp_camera_restarts_total{mac=\"02:00:5e:10:00:af\"} 0\n"
              "# HELP qvp_camera_address_changes_total How often the camera had another address than before.\n"
              "# TYPE qvp_camera_address_changes_total counter\n"
              "qvp_camera_address_changes_total{mac=\"02:00:5e:10:00:af\"} 0\n");
}

TEST_F(CameraMetricsTest, TheLastReportCounts) {
    metrics_.add(report(7), kEth0, 1700000000);
    Presence later = report(8);
    later.firmware = "1.06";
    metrics_.add(later, kEth0, 1700000030);
    EXPECT_EQ(valueOf("qvp_cameras"), "1");
    EXPECT_EQ(ofTheCamera("last_report_timestamp_seconds"), "1700000030");
    EXPECT_EQ(ofTheCamera("reports_total"), "2");
    EXPECT_THAT(metrics_.text(), HasSubstr("firmware=\"1.06\""));
    EXPECT_EQ(metrics_.text().find("firmware=\"1.05\""), std::string::npos);
}

TEST_F(CameraMetricsTest, ACountThatGoesBackIsARestart) {
    struct Row {
        std::vector<uint16_t> sequences;
        const char* restarts;
        const char* what;
    };
    const Row rows[] = {
        {{7, 8, 9}, "0", "in step"},
        {{7, 20, 400}, "0", "lost reports"},
        {{7, 0}, "1", "a restart"},
        {{7, 0, 1, 2}, "1", "and on"},
        {{7, 6}, "1", "by one"},
        {{40000, 0}, "1", "more than half of the numbers ahead"},
        {{0, 0, 0}, "2", "it does not live for 30 seconds"},
        {{7, 7}, "0", "a network that repeats itself"},
        {{65535, 0, 1}, "0", "the count is full"},
        {{65535, 119}, "0", "full, and lost reports"},
        {{65535, 120}, "1", "too many of them"},
        {{65416, 0}, "0", "full, and lost reports"},
        {{65415, 0}, "1", "too many of them"},
        {{65000, 0}, "1", "a restart"},
    };
    for (const Row& row : rows) {
        metrics_ = {};
        for (const uint16_t sequence : row.sequences) hear({sequence});
        EXPECT_EQ(ofTheCamera("restarts_total"), row.restarts) << row.what;
    }
}

TEST_F(CameraMetricsTest, ARestartThatTwoInterfacesHearIsOne) {
    hear({0}, kEth0);
    hear({0}, kEth1);
    EXPECT_EQ(ofTheCamera("restarts_total"), "0");
    for (int i = 0; i < 2; i++) {
        hear({0}, kEth0);
        hear({0}, kEth1);
    }
    EXPECT_EQ(ofTheCamera("restarts_total"), "2");
    hear({1}, kEth1);
    hear({0}, kEth1);
    hear({0}, kEth1);
    EXPECT_EQ(ofTheCamera("restarts_total"), "4");
}

TEST_F(CameraMetricsTest, AddressesThatChange) {
    metrics_.add(report(1, 10), kEth0, 1);
    metrics_.add(report(2, 10), kEth0, 2);
    EXPECT_EQ(ofTheCamera("address_changes_total"), "0");
    metrics_.add(report(3, 11), kEth0, 3);
    EXPECT_EQ(ofTheCamera("address_changes_total"), "1");
    EXPECT_THAT(metrics_.text(), HasSubstr("address=\"192.0.2.11\"} 1\n"));
    metrics_.add(report(4, 10), kEth0, 4);
    EXPECT_EQ(ofTheCamera("address_changes_total"), "2");
}

TEST_F(CameraMetricsTest, NoAddressIsNoOtherAddress) {
    const Presence none = without(report(1), &Presence::address);
    metrics_.add(none, kEth0, 1);
    metrics_.add(report(2, 10), kEth0, 2);
    EXPECT_EQ(ofTheCamera("address_changes_total"), "0");
    metrics_.add(none, kEth0, 3);
    EXPECT_THAT(metrics_.text(), HasSubstr("address=\"0.0.0.0\"} 1\n"));
    metrics_.add(report(4, 10), kEth0, 4);
    EXPECT_EQ(ofTheCamera("address_changes_total"), "0");
    metrics_.add(none, kEth0, 5);
    metrics_.add(report(6, 11), kEth0, 6);
    EXPECT_EQ(ofTheCamera("address_changes_total"), "1");
}

TEST_F(CameraMetricsTest, LabelsOfHostileTexts) {
    const std::pair<std::string, std::string> rows[] = {
        {"T\xC3\xBCr \xE9\x96\x80", "T\xC3\xBCr \xE9\x96\x80"},
        {"a\\b", "a\\\\b"},
        {"\"} 1", "\\\"} 1"},
        {"a\nqvp_cameras 9", "a\\nqvp_cameras 9"},
        {"\\n", "\\\\n"},
        {"a\rb\tc",
         "a\xEF\xBF\xBD"
         "b\xEF\xBF\xBD"
         "c"},
        {"\x1B[2J\x7F", "\xEF\xBF\xBD[2J\xEF\xBF\xBD"},
        {"\xC2\x9B"
         "2J\xC2\xA0",
         "\xEF\xBF\xBD"
         "2J\xC2\xA0"},
        {"\xFF\xC3", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"", ""},
    };
    for (const auto& [text, label] : rows) {
        for (std::string Presence::*field :
             {&Presence::name, &Presence::product, &Presence::firmware, &Presence::hardware}) {
            metrics_ = {};
            Presence hostile = report(1);
            hostile.name = hostile.product = hostile.firmware = hostile.hardware = "x";
            hostile.*field = text;
            metrics_.add(hostile, kEth0, 1);
            EXPECT_THAT(metrics_.text(), HasSubstr("=\"" + label + "\",")) << text;
            const std::string all = metrics_.text();
            EXPECT_EQ(std::ranges::count(all, '\n'), 21);
        }
    }
}

static Presence madeUp(size_t number) {
    Presence presence = report(0);
    for (size_t i = 0; i < 3; i++) presence.mac.bytes[5 - i] = static_cast<uint8_t>(number >> 8 * i);
    return presence;
}

TEST_F(CameraMetricsTest, ThereIsAnEndOfCameras) {
    for (size_t i = 0; i < 10000; i++) metrics_.add(madeUp(i), kEth0, 1);
    EXPECT_EQ(valueOf("qvp_cameras"), "10000");
    EXPECT_EQ(valueOf("qvp_reports_ignored_total"), "0");
    for (size_t i = 10000; i < 10003; i++) metrics_.add(madeUp(i), kEth0, 2);
    metrics_.add(madeUp(9999), kEth0, 3);  // 0x00270F
    EXPECT_EQ(valueOf("qvp_cameras"), "10000");
    EXPECT_EQ(valueOf("qvp_reports_ignored_total"), "3");
    EXPECT_EQ(valueOf("qvp_camera_reports_total{mac=\"02:00:5e:00:27:0f\"}"), "2");
    EXPECT_EQ(valueOf("qvp_camera_reports_total{mac=\"02:00:5e:00:27:10\"}"), "");
}
