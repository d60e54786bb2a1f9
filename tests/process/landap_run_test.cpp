// The second family through the whole daemon: what it answers beside the first, and what it does not.
#include <algorithm>
#include <map>

#include "process/daemon_run.h"
#include "support/wireless_rows.h"

namespace unit {
namespace {

using testing::IsEmpty;

class LandapRun : public DaemonTest {
protected:
    static Bytes asking(std::uint16_t protocol, std::uint16_t opcode) {
        Packet packet = request(command(primaryFamily(), "reboot"));  // with credentials
        packet.put(4, {static_cast<std::uint8_t>(opcode & 0xFF), static_cast<std::uint8_t>(opcode >> 8)});
        packet.put(18, {static_cast<std::uint8_t>(protocol & 0xFF), static_cast<std::uint8_t>(protocol >> 8)});
        return packet.put(150, {1}).bytes();
    }

    // Runs the daemon on what was delivered. Nothing may come of it: no trace line but the receipt's, no reply, nothing
    // asked of the camera.
    static void expectSilence(std::size_t datagrams) {
        fake::beforeWait([] { fake::record("end of script"); });
        fake::wakeForNothing();
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.trace.size(), 2 + datagrams + 3);  // start and report, receipts, the stop's three
        const std::vector<fake::Sent> sent = fake::sent();
        ASSERT_EQ(sent.size(), 1U);
        EXPECT_EQ(sent[0].to, "255.255.255.255:62976");
        EXPECT_EQ(sent[0].bytes[18], 2);
        const fake::Events events = fake::events();
        const auto start = std::find(events.begin(), events.end(), "wait");
        const auto end = std::find(events.begin(), events.end(), "end of script");
        for (auto event = start; event != end; ++event) {
            EXPECT_TRUE(*event == "wait" || event->rfind("recvfrom", 0) == 0) << *event;
        }
        EXPECT_GE(end - start, static_cast<std::ptrdiff_t>(2 * datagrams));
    }
};

TEST_F(LandapRun, IsSilentForCommandsItDoesNotHave) {
    std::vector<Bytes> datagrams{asking(1, 0x0103), asking(1, 0x0200), asking(1, 0x00A0), asking(1, 0x00C1),
                                 asking(1, 0x01A1), asking(1, 0xFFA1), asking(1, 0x0000), asking(1, 0xA100)};
    for (const std::uint16_t protocol : Bytes{1, 2}) {
        datagrams.push_back(asking(protocol, 0x00AA));
        for (std::uint16_t opcode = 0x00B2; opcode <= 0x00BF; ++opcode) datagrams.push_back(asking(protocol, opcode));
    }
    for (const Bytes& datagram : datagrams) fake::deliver(datagram);
    expectSilence(datagrams.size());
}

TEST_F(LandapRun, IsSilentForOtherProtocols) {
    std::vector<Bytes> datagrams;
    for (const std::uint16_t protocol : std::vector<std::uint16_t>{0, 3, 4, 0x0100, 0x0101, 0x0102, 0x0200, 0xFFFF}) {
        for (std::uint16_t opcode = 0x00A1; opcode <= 0x00C0; ++opcode) datagrams.push_back(asking(protocol, opcode));
        datagrams.push_back(asking(protocol, 0x0103));
        datagrams.push_back(asking(protocol, 0x0200));
    }
    for (const Bytes& datagram : datagrams) fake::deliver(datagram);
    expectSilence(datagrams.size());
}

TEST_F(LandapRun, DescribesItselfInFewerBytes) {
    fake::setText("INFO", "HWVersion", "A1");
    fake::setTime(1718454896);
    for (const Family* family : {&primaryFamily(), &landapFamily()}) {
        const auto port = static_cast<std::uint16_t>(5000 + family->protocol);
        fake::deliver(request(command(*family, "discovery")).fill(6, 6, 0xFF).first(22), port);
    }
    EXPECT_EQ(runDaemon().status, 0);
    const std::vector<fake::Sent> primary = fake::sentTo("192.168.0.100:5002");
    const std::vector<fake::Sent> landap = fake::sentTo("192.168.0.100:5001");
    ASSERT_EQ(primary.size(), 1U);
    ASSERT_EQ(landap.size(), 1U);
    Packet expected(334);
    expected.put(0, Bytes(primary[0].bytes.begin(), primary[0].bytes.begin() + 334));
    expected.put(18, {0x01, 0x00, 0x38, 0x01}).put(214, {1, 0, 1, 0, 0, 0});
    EXPECT_TRUE(sameBytes(expected.bytes(), landap[0].bytes));
    ASSERT_EQ(primary[0].bytes.size(), 505U);
    EXPECT_EQ(primary[0].bytes[214], 3);
    EXPECT_EQ(primary[0].bytes[366], 'A');
    const fake::Events reads = fake::eventsOf({"cfgRead"});
    EXPECT_EQ(std::count(reads.begin(), reads.end(), "cfgRead INFO HWVersion"), 2);  // the report's and the primary's
}

TEST_F(LandapRun, AnswersTheSupportQueryToItsMacOnly) {
    for (const Family* family : {&primaryFamily(), &landapFamily()}) {
        const CommandRow& query = command(*family, "query_support_fun");
        const auto broadcast = static_cast<std::uint16_t>(5000 + family->protocol);
        const auto oddSelector = static_cast<std::uint16_t>(6000 + family->protocol);
        fake::deliver(request(query).fill(6, 6, 0xFF).first(22), broadcast);
        fake::deliver(request(query).put(16, {0x34, 0x12}).first(22), oddSelector);
    }
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_EQ(fake::sentTo("192.168.0.100:5002").size(), 1U);
    EXPECT_THAT(fake::sentTo("192.168.0.100:5001"), IsEmpty());
    EXPECT_THAT(fake::sentTo("192.168.0.100:6002"), IsEmpty());
    const std::vector<fake::Sent> landap = fake::sentTo("192.168.0.100:6001");
    ASSERT_EQ(landap.size(), 1U);
    EXPECT_TRUE(sameBytes(reply(command(landapFamily(), "query_support_fun"))
                              .put(22, {0xA6, 0, 0xA7, 0, 0xA8, 0, 0xA9, 0, 0xAB, 0, 0xAC, 0,
                                        0xAD, 0, 0xAE, 0, 0xAF, 0, 0xB0, 0, 0xB1, 0, 0xC0, 0})
                              .bytes(),
                          landap[0].bytes));
}

// A supported-function query with a payload must carry the administrator's credentials.
TEST_F(LandapRun, ChecksCredentialsOnceThereIsAPayload) {
    const CommandRow& query = command(landapFamily(), "query_support_fun");
    const Packet bare = request(query).put(20, {0x00, 0x01});
    fake::deliver(bare.first(150), 5001);
    fake::deliver(Packet(bare).put(22, std::string("YWRtaW4=")).put(86, std::string("c2VjcmV0")).first(150), 5002);
    fake::deliver(Packet(bare).put(18, {2}).first(150), 5003);  // not in the primary family
    EXPECT_EQ(runDaemon().status, 0);
    const std::vector<fake::Sent> refused = fake::sentTo("192.168.0.100:5001");
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_TRUE(sameBytes(reply(query).put(16, {3}).bytes(), refused[0].bytes));
    for (const char* receiver : {"192.168.0.100:5002", "192.168.0.100:5003"}) {
        const std::vector<fake::Sent> granted = fake::sentTo(receiver);
        ASSERT_EQ(granted.size(), 1U) << receiver;
        EXPECT_EQ(granted[0].bytes[16], 0) << receiver;
        EXPECT_EQ(granted[0].bytes[22], 0xA6) << receiver;
    }
}

// One family's request leaves what the other's would: the same work behind the reply, once.
TEST_F(LandapRun, LeavesTheSameWorkBehindItsReplies) {
    std::map<std::string, fake::Events> work;
    for (const Family* family : {&primaryFamily(), &landapFamily()}) {
        SetUp();
        seedWireless();
        fake::deliver(request(command(*family, "init_wifi_site_survey")).bytes());
        fake::deliver(request(command(*family, "set_simple_wifi_info")).put(150, {1}).bytes());
        fake::deliver(request(command(*family, "commit_setting")).bytes());
        fake::deliver(request(command(*family, "factory_reset")).bytes());
        fake::deliver(request(command(primaryFamily(), "discovery")).bytes());  // finds nothing left to do
        EXPECT_EQ(runDaemon().status, 0);
        work[family->name] = fake::eventsOf({"system", "getSiteList", "cfgWrite"});
    }
    EXPECT_EQ(work["primary"], work["landap"]);
    EXPECT_GE(work["landap"].size(), 4U);
    EXPECT_EQ(work["landap"].front(), "getSiteList 21844");
}

}  // namespace
}  // namespace unit
