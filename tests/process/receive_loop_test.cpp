// One datagram in, its reply out, the deferred actions after it.
#include <errno.h>

#include <map>
#include <regex>
#include <set>

#include "camera/pending_actions.h"
#include "process/daemon_run.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kReceived = "[QVP][qvp][main][Line: 343]: QVP Client receive command from [192.168.0.100]";

class ReceiveLoop : public DaemonTest {
protected:
    static const CommandRow& discovery() { return command(primaryFamily(), "discovery"); }

    // A header of just these fields, for this device's MAC.
    static Bytes header(int opcode, int protocol) {
        Packet packet(22);
        packet.put(0, {0xFD, 0xFD, 0x34, 0x12, static_cast<std::uint8_t>(opcode & 0xFF),
                       static_cast<std::uint8_t>(opcode >> 8)});
        packet.put(6, {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30});
        return packet.put(18, {static_cast<std::uint8_t>(protocol & 0xFF), static_cast<std::uint8_t>(protocol >> 8)})
            .bytes();
    }

    static std::vector<fake::Sent> replies() {
        std::vector<fake::Sent> sent = fake::sent();
        std::erase_if(sent, [](const fake::Sent& datagram) { return datagram.to == "255.255.255.255:62976"; });
        return sent;
    }

    // Names of the handlers that were called, in order: each traces its entry, and these requests are not rejected.
    static std::vector<std::string> handlers(const DaemonRun& run) {
        static const std::regex line(
            "\\[(?:QVP\\]\\[qvp_function|landap\\]\\[landap_function)\\]\\[(\\w+)\\]\\[Line: \\d+\\]");
        std::vector<std::string> names;
        std::smatch match;
        for (const std::string& text : run.trace) {
            if (std::regex_match(text, match, line) && match[1] != "general_report") names.push_back(match[1]);
        }
        return names;
    }
};

TEST_F(ReceiveLoop, DropsDatagramsBelow22BytesWithoutATrace) {
    for (const std::size_t length : {0, 1, 20, 21}) {
        SetUp();
        fake::deliver(request(discovery()).first(length));
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.serviceTrace(), testing::Not(testing::Contains(kReceived))) << length;
        EXPECT_THAT(handlers(run), IsEmpty()) << length;
        EXPECT_THAT(replies(), IsEmpty()) << length;
    }
}

TEST_F(ReceiveLoop, ServesDatagramsFrom22Bytes) {
    for (const std::size_t length : {22, 23, 1023, 1024}) {
        SetUp();
        fake::deliver(request(discovery()).first(length), 40123);
        const DaemonRun run = runDaemon();
        EXPECT_THAT(run.serviceTrace(), testing::Contains(kReceived)) << length;
        EXPECT_THAT(handlers(run), ElementsAre("discovery")) << length;
        ASSERT_EQ(replies().size(), 1u) << length;
        EXPECT_EQ(replies()[0].to, "192.168.0.100:40123");
        EXPECT_EQ(replies()[0].bytes.size(), 505u);
    }
}

TEST_F(ReceiveLoop, CutsDatagramsAt1024Bytes) {
    Bytes longOne = request(discovery()).bytes();
    longOne.resize(9000, 0xFF);
    fake::deliver(longOne);
    runDaemon();
    EXPECT_EQ(replies().size(), 1u);
    EXPECT_THAT(fake::eventsOf({"recvfrom"}), ElementsAre("recvfrom 1024"));
}

TEST_F(ReceiveLoop, AnswersABroadcastToItsSenderAlone) {
    fake::deliver(request(discovery()).fill(6, 6, 0xFF).first(22), 62976);
    runDaemon();
    ASSERT_EQ(replies().size(), 1u);
    EXPECT_EQ(replies()[0].to, "192.168.0.100:62976");
}

TEST_F(ReceiveLoop, LeavesNothingOfADatagramForTheNext) {
    const CommandRow& commit = command(primaryFamily(), "commit_setting");
    fake::deliver(request(commit).bytes());
    fake::deliver(headerOnly(commit));
    fake::deliver(request(discovery()).first(22));
    fake::deliver(headerOnly(commit));
    runDaemon();
    ASSERT_EQ(replies().size(), 4u);
    EXPECT_EQ(replies()[0].bytes[16], 0);
    EXPECT_TRUE(sameBytes(reply(commit).put(16, {3}).bytes(), replies()[1].bytes));
    EXPECT_TRUE(sameBytes(reply(commit).put(16, {3}).bytes(), replies()[3].bytes));
    EXPECT_THAT(fake::eventsOf({"recvfrom"}), testing::Each("recvfrom 1024"));  // into a zeroed buffer each time
}

// Every opcode up to 0x2FF and some beyond, in one run; the handlers called are exactly those of the table.
TEST_F(ReceiveLoop, CallsTheHandlerOfTheFamilyAndOpcode) {
    for (const Family* family : {&primaryFamily(), &landapFamily()}) {
        SetUp();
        std::map<int, std::string> wanted;
        for (const CommandRow& row : allCommands()) {
            if (row.family == family) wanted[row.opcode] = row.handlerName();
        }
        std::vector<std::string> expected;
        for (const auto& [opcode, name] : wanted) expected.push_back(name);
        std::vector<int> opcodes;
        for (int opcode = 0; opcode < 0x300; ++opcode) opcodes.push_back(opcode);
        for (const int opcode : {0x1A1, 0x3A1, 0xA100, 0xA1A1, 0xFFA1, 0xFFFF, 0x80A1, 0x4203})
            opcodes.push_back(opcode);
        for (const int opcode : opcodes) fake::deliver(header(opcode, family->protocol));
        const DaemonRun run = runDaemon();
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(handlers(run), testing::ElementsAreArray(expected)) << family->name;
        EXPECT_EQ(replies().size(), expected.size()) << family->name;
        const std::vector<std::string> trace = run.serviceTrace();
        EXPECT_EQ(std::count(trace.begin(), trace.end(), kReceived), static_cast<std::ptrdiff_t>(opcodes.size()));
    }
}

TEST_F(ReceiveLoop, IgnoresEveryOtherProtocol) {
    for (const int protocol : {0, 3, 0xFF, 0x100, 0x200, 0x0102, 0x0201, 0xFFFF}) {
        for (const int opcode : {0xA1, 0xA5, 0xAE, 0x103, 0x200}) fake::deliver(header(opcode, protocol));
    }
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(handlers(run), IsEmpty());
    EXPECT_THAT(replies(), IsEmpty());
    EXPECT_EQ(run.serviceTrace().size(), 1u + 8 * 5 + 3);
}

TEST_F(ReceiveLoop, SendsNothingForARequestThatIsRejected) {
    for (const CommandRow& row : allCommands()) fake::deliver(Packet(request(row)).put(0, {0xFE, 0xFD}).first(150));
    runDaemon();
    EXPECT_THAT(replies(), IsEmpty());
    EXPECT_THAT(fake::commands(), IsEmpty());
}

TEST_F(ReceiveLoop, TakesAFailedReceiveForADatagramOfNoFamily) {
    fake::failReceive(ECONNREFUSED);
    fake::deliver(request(discovery()).first(22));
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.serviceTrace()[1], "[QVP][qvp][main][Line: 343]: QVP Client receive command from [0.0.0.0]");
    EXPECT_EQ(run.serviceTrace()[2], kReceived);
    EXPECT_THAT(handlers(run), ElementsAre("discovery"));
    EXPECT_EQ(replies().size(), 1u);
}

TEST_F(ReceiveLoop, GoesOnAfterAnInterruptionOrAWakeForNothing) {
    fake::failWait(EINTR);
    fake::wakeForNothing();
    fake::deliver(request(discovery()).first(22));
    const DaemonRun run = runDaemon();
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(fake::eventsOf({"wait", "recvfrom"}), ElementsAre("wait", "wait", "wait", "recvfrom 1024", "wait"));
    EXPECT_EQ(replies().size(), 1u);
}

TEST_F(ReceiveLoop, GoesOnAfterAReplyThatCannotBeSent) {
    fake::failCall("sendto", 2, EHOSTUNREACH);  // the first is the report at start-up
    fake::deliver(request(discovery()).first(22));
    fake::deliver(request(discovery()).first(22));
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_EQ(replies().size(), 2u);
}

TEST_F(ReceiveLoop, AllocatesNothingForARequest) {
    for (const CommandRow& row : allCommands()) fake::deliver(request(row).bytes());
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_THAT(fake::eventsOf({"malloc"}), testing::SizeIs(4));
}

TEST_F(ReceiveLoop, RunsDeferredActionsBehindTheReplyInBothFamilies) {
    for (const Family* family : {&primaryFamily(), &landapFamily()}) {
        SetUp();
        fake::deliver(request(command(*family, "factory_reset")).first(150));
        runDaemon();
        fake::Events order = fake::eventsOf({"sendto", "system"});
        for (std::string& event : order) event = event.substr(0, event.find(' '));
        EXPECT_THAT(order, ElementsAre("sendto", "sendto", "system", "system")) << family->name;
        EXPECT_THAT(fake::commands(), ElementsAre("/etc/init.d/userconfig reset 1>/dev/null 2>/dev/null",
                                                  "/var/reboot -d 5 2>/dev/null 1>/dev/null&"));
    }
}

TEST_F(ReceiveLoop, RunsDeferredActionsEvenWhenTheReplyCannotBeSent) {
    fake::failCall("sendto", 2, EHOSTUNREACH);
    fake::deliver(request(command(primaryFamily(), "reboot")).first(150));
    runDaemon();
    EXPECT_EQ(fake::commands().size(), 1u);
}

TEST_F(ReceiveLoop, KeepsFlagsPendingUntilTheNextReply) {
    const Bytes notOurs = Packet(request(discovery())).put(6, {9}).first(22);
    const CommandRow& survey = command(primaryFamily(), "checkSiteSurveyRequest");
    const auto mark = [](const std::string& text) { return [text] { fake::record("step " + text); }; };
    fake::beforeWait([] { g_nNetworkReset = g_nCommitSetting = 1; });
    fake::deliver(notOurs);
    fake::beforeWait(mark("unknown opcode"));
    fake::deliver(header(0xAA, 2));
    fake::beforeWait(mark("refused survey"));
    fake::deliver(headerOnly(survey));
    fake::beforeWait(mark("survey"));
    fake::deliver(request(survey).first(150));
    fake::beforeWait(mark("discovery"));
    fake::deliver(headerOnly(discovery()));
    fake::beforeWait(
        [] { fake::record("step end " + std::to_string(g_nNetworkReset) + std::to_string(g_nCommitSetting)); });
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_THAT(fake::eventsOf({"step", "system"}),
                ElementsAre("step unknown opcode", "step refused survey", "step survey", "step discovery",
                            "system /etc/init.d/ipv4 restart 2>/dev/null 1>/dev/null", "step end 00"));
    EXPECT_EQ(replies().size(), 3u);
}

}  // namespace
}  // namespace unit
