// The report that a camera broadcasts of its own accord, and the timer behind it.
#include "service/presence_report.h"

#include <errno.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>

#include "scripted_network.h"
#include "service/service_state.h"
#include "support/captured_stderr.h"
#include "support/handler_test.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

int sequenceOf(const Bytes& report) { return report[2] | report[3] << 8; }

class PresenceReport : public HandlerTest {
protected:
    void TearDown() override {
        g_nStopRunning = 0;
        g_nSocket = -1;
        g_pGeneralReportBuffer = nullptr;
        HandlerTest::TearDown();
    }

    static Bytes report() {
        Bytes buffer(1024);
        const CapturedStderr captured;
        EXPECT_EQ(general_report(buffer.data(), 1024), 317);
        buffer.resize(317);
        return buffer;
    }

    static Packet bareReport(int sequence) {
        Packet packet(317);
        packet.put(0,
                   {0xFF, 0xFF, static_cast<std::uint8_t>(sequence & 0xFF), static_cast<std::uint8_t>(sequence >> 8)});
        packet.put(4, {0xA0, 0x00, 0x02, 0x00, 0x5E, 0x10, 0x20, 0x30, 192, 168, 0, 20, 0, 0, 2, 0, 0x27, 0x01});
        packet.put(86, std::string("3")).put(118, std::string("0.00"));
        return packet.put(150, {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30}).put(284, {192, 168, 0, 20, 255, 255, 255, 0});
    }
};

TEST_F(PresenceReport, TellsWhoTheCameraIs) {
    fake::setText("INFO", "Product", "Sample Camera");
    fake::setText("INFO", "HWVersion", "A1");
    fake::setNumber("INFO", "Build", 4711);
    fake::setNumber16("System", "MainVersion", 1);
    fake::setNumber16("System", "FirmwareVersion", 5);
    fake::setText("CAMSYSTEM", "CameraName", "Front door");
    const Bytes built = report();
    Packet expected = bareReport(sequenceOf(built));
    expected.put(22, std::string("Sample Camera")).put(118, std::string("1.05")).put(156, std::string("A1"));
    expected.put(220, std::string("Front door"));
    EXPECT_TRUE(sameBytes(expected.bytes(), built));
}

TEST_F(PresenceReport, OfAnEmptyStoreLeavesTheFieldsZero) {
    const Bytes built = report();
    EXPECT_TRUE(sameBytes(bareReport(sequenceOf(built)).bytes(), built));
}

TEST_F(PresenceReport, LeavesAddressesThatAreNotThereZero) {
    fake::camera().interfaces["eth0"] = {};
    const Bytes built = report();
    EXPECT_TRUE(sameBytes(bareReport(sequenceOf(built)).fill(12, 4, 0).fill(284, 8, 0).bytes(), built));
}

TEST_F(PresenceReport, ReadsTheBuildNumberForNoUse) {
    report();
    EXPECT_THAT(fake::events(), testing::UnorderedElementsAre(
                                    "net_get_ifaddr eth0", "cfgRead INFO Product", "cfgRead System MainVersion",
                                    "cfgRead System FirmwareVersion", "cfgRead INFO HWVersion", "cfgRead INFO Build",
                                    "cfgRead CAMSYSTEM CameraName", "net_get_ifaddr eth0", "net_get_netmask eth0"));
}

TEST_F(PresenceReport, CutsTextsAtTheirFields) {
    const struct {
        const char *section, *key;
        std::size_t at, width;
    } fields[] = {{"INFO", "Product", 22, 64}, {"INFO", "HWVersion", 156, 32}, {"CAMSYSTEM", "CameraName", 220, 64}};
    for (const auto& field : fields) {
        for (const std::size_t length : {field.width - 1, field.width, field.width + 1, std::size_t{255}}) {
            fake::setText(field.section, field.key, std::string(length, 'x'));
            const Bytes built = report();
            Packet expected = bareReport(sequenceOf(built));
            expected.fill(field.at, std::min(length, field.width), 'x');
            EXPECT_TRUE(sameBytes(expected.bytes(), built)) << field.key << " of " << length;
        }
        fake::erase(field.section, field.key);
    }
}

TEST_F(PresenceReport, WritesTheLargestVersionWhole) {
    fake::setNumber16("System", "MainVersion", 65535);
    fake::setNumber16("System", "FirmwareVersion", 65535);
    const Bytes built = report();
    const Packet expected = bareReport(sequenceOf(built)).put(118, std::string("65535.65535"));
    EXPECT_TRUE(sameBytes(expected.bytes(), built));
}

TEST_F(PresenceReport, CountsTheReportsInSixteenBits) {
    int last = sequenceOf(report());
    Bytes buffer(1024);
    const CapturedStderr captured;
    for (int built = 0; built < 65536; ++built) {
        fake::clearEvents();
        general_report(buffer.data(), 1024);
        const int next = sequenceOf(buffer);
        ASSERT_EQ(next, (last + 1) % 65536);
        last = next;
    }
}

TEST_F(PresenceReport, NeedsRoomForItself) {
    const int before = sequenceOf(report());
    fake::clearEvents();
    for (const int capacity : {316, 22, 0, -1}) {
        Bytes buffer(static_cast<std::size_t>(std::max(capacity, 0)));
        const CapturedStderr captured;
        EXPECT_EQ(general_report(buffer.data(), capacity), -1);
        EXPECT_TRUE(sameBytes(Bytes(buffer.size()), buffer));
        EXPECT_EQ(linesOf(captured.text()).size(), 2u) << capacity;
    }
    EXPECT_THAT(fake::events(), IsEmpty());
    Bytes exact(317);
    const CapturedStderr captured;
    EXPECT_EQ(general_report(exact.data(), 317), 317);
    EXPECT_EQ(sequenceOf(exact), (before + 1) % 65536);
}

TEST_F(PresenceReport, TracesAsAHandlerDoes) {
    Bytes buffer(1024);
    const CapturedStderr captured;
    general_report(buffer.data(), 1024);
    general_report(buffer.data(), 316);
    const std::vector<std::string> lines = linesOf(captured.text());
    EXPECT_EQ(lines.size(), 3u);
    for (const std::string& text : lines) {
        EXPECT_TRUE(isTraceLine(text, primaryFamily(), "general_report")) << text;
    }
}

TEST_F(PresenceReport, IsBroadcastFromAClearedBuffer) {
    Bytes buffer(1024, 0xAA);
    g_pGeneralReportBuffer = buffer.data();
    g_nSocket = 1000;
    fake::scriptNetwork();
    {
        const CapturedStderr captured;
        sendPresenceReport(SIGALRM);
    }
    const std::vector<fake::Sent> sent = fake::sent();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].to, "255.255.255.255:62976");
    EXPECT_TRUE(sameBytes(bareReport(sequenceOf(sent[0].bytes)).bytes(), sent[0].bytes));
    EXPECT_TRUE(sameBytes(Bytes(1024 - 317), {buffer.begin() + 317, buffer.end()}));
}

TEST_F(PresenceReport, IsNotSentWithoutASocketNorOnceAStopWasAskedFor) {
    Bytes buffer(1024);
    g_pGeneralReportBuffer = buffer.data();
    fake::scriptNetwork();
    const CapturedStderr captured;
    g_nSocket = -1;
    sendPresenceReport(SIGALRM);
    g_nSocket = 1000;
    g_nStopRunning = 1;
    sendPresenceReport(SIGALRM);
    EXPECT_THAT(fake::events(), IsEmpty());
    EXPECT_EQ(captured.text(), "");
}

TEST_F(PresenceReport, GoesOnWhenASendFails) {
    Bytes buffer(1024);
    g_pGeneralReportBuffer = buffer.data();
    g_nSocket = 1000;
    fake::scriptNetwork();
    fake::failCall("sendto", 1, ENETDOWN);
    const CapturedStderr captured;
    sendPresenceReport(SIGALRM);
    sendPresenceReport(SIGALRM);
    const std::vector<fake::Sent> sent = fake::sent();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sequenceOf(sent[1].bytes), (sequenceOf(sent[0].bytes) + 1) % 65536);
}

TEST_F(PresenceReport, LeavesErrnoToWhatItInterrupts) {
    Bytes buffer(1024);
    g_pGeneralReportBuffer = buffer.data();
    g_nSocket = 1000;
    fake::scriptNetwork();
    fake::failCall("sendto", 1, ENETDOWN);
    const CapturedStderr captured;
    errno = EDOM;
    sendPresenceReport(SIGALRM);
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(fake::sent().size(), 1u);
}

TEST_F(PresenceReport, TimerFiresEveryThirtySecondsUntilDisarmed) {
    armPresenceTimer();
    disarmPresenceTimer();
    EXPECT_THAT(fake::events(), ElementsAre("setitimer ITIMER_REAL first 30.000000 interval 30.000000",
                                            "setitimer ITIMER_REAL first 0.000000 interval 0.000000"));
}

}  // namespace
}  // namespace unit
