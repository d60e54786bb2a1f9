#include "support/handler_test.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "camera/pending_actions.h"
#include "handlers/qvp_function.h"
#include "support/captured_stderr.h"

namespace unit {
namespace {

using testing::AssertionFailure;
using testing::AssertionResult;
using testing::AssertionSuccess;

struct Flag {
    const char* name;
    std::int32_t* value;
};

constexpr Flag kFlags[] = {
    {"g_nPppoeRestart", &g_nPppoeRestart},
    {"g_nInitSiteSurvey", &g_nInitSiteSurvey},
    {"g_nDeviceNameReset", &g_nDeviceNameReset},
    {"g_nAuthReset", &g_nAuthReset},
    {"g_nWifiReset", &g_nWifiReset},
    {"g_nWebServerReset", &g_nWebServerReset},
    {"g_nNetworkReset", &g_nNetworkReset},
    {"g_nResetTime", &g_nResetTime},
    {"g_nCommitSetting", &g_nCommitSetting},
    {"g_nFactoryReset", &g_nFactoryReset},
    {"g_nReboot", &g_nReboot},
};

std::uint8_t low(int number) { return static_cast<std::uint8_t>(number & 0xFF); }

std::uint8_t high(int number) { return static_cast<std::uint8_t>(number >> 8 & 0xFF); }

}  // namespace

Outcome call(Handler handler, const Bytes& request, int capacity) {
    Bytes datagram = request;
    datagram.resize(1024);
    Outcome outcome{0, Bytes(static_cast<std::size_t>(std::max(capacity, 0))), {}};
    const CapturedStderr captured;
    outcome.length = handler(datagram.data(), outcome.reply.data(), capacity);
    outcome.trace = linesOf(captured.text());
    return outcome;
}

Packet request(const CommandRow& row) {
    Packet packet(1024);
    packet.put(0, {0xFD, 0xFD, 0x34, 0x12, low(row.opcode), high(row.opcode)});
    packet.put(6, {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30});
    packet.put(18, {row.family->protocol, 0});
    if (row.needs == Needs::Credentials) packet.put(22, std::string("YWRtaW4=")).put(86, std::string("c2VjcmV0"));
    return packet;
}

Bytes headerOnly(const CommandRow& row) { return request(row).first(22); }

Packet reply(const CommandRow& row) {
    Packet packet(static_cast<std::size_t>(row.replyLength));
    packet.put(0, {0xEE, 0xFE, 0x34, 0x12, low(row.opcode), high(row.opcode)});
    packet.put(6, {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30, 192, 168, 0, 20});
    packet.put(18, {row.family->protocol, 0, low(row.replyLength - 22), high(row.replyLength - 22)});
    return packet;
}

AssertionResult replies(const Packet& expected, const Outcome& outcome) {
    if (outcome.length != static_cast<int>(expected.bytes().size())) {
        return AssertionFailure() << "length " << outcome.length << ", expected " << expected.bytes().size();
    }
    Bytes whole = expected.bytes();
    whole.resize(std::max(whole.size(), outcome.reply.size()));
    return sameBytes(whole, outcome.reply);
}

AssertionResult silent(const Outcome& outcome) {
    if (outcome.length != -1) return AssertionFailure() << "length " << outcome.length << ", expected -1";
    return sameBytes(Bytes(outcome.reply.size()), outcome.reply);
}

static bool isLineNumber(const std::string& text) {
    return !text.empty() && text[0] != '0' && text.find_first_not_of("0123456789") == std::string::npos;
}

// Not by <regex>, which costs seconds to compile.
bool isTraceLine(const std::string& line, const Family& family, const std::string& function) {
    const std::string front = "[" + family.tracePrefix + "][" + family.source + "][" + function + "][Line: ";
    if (!line.starts_with(front) || !line.ends_with("]")) return false;
    return isLineNumber(line.substr(front.size(), line.size() - front.size() - 1));
}

AssertionResult traces(const CommandRow& row, std::size_t count, const Outcome& outcome) {
    if (outcome.trace.size() != count) {
        return AssertionFailure() << outcome.trace.size() << " trace lines, expected " << count;
    }
    for (const std::string& line : outcome.trace) {
        if (!isTraceLine(line, *row.family, row.handlerName())) return AssertionFailure() << "trace line: " << line;
    }
    return AssertionSuccess();
}

std::vector<std::string> raisedFlags() {
    std::vector<std::string> raised;
    for (const Flag& flag : kFlags) {
        if (*flag.value != 0) raised.push_back(std::string(flag.name) + "=" + std::to_string(*flag.value));
    }
    return raised;
}

void clearFlags() {
    for (const Flag& flag : kFlags) *flag.value = 0;
    std::memset(g_szDateTime, 0, sizeof g_szDateTime);
}

void seedCamera() {
    fake::reset();
    fake::camera().interfaces["eth0"] = {
        fake::Octets{192, 168, 0, 20},
        fake::Octets{255, 255, 255, 0},
        fake::Octets{192, 168, 0, 1},
        fake::Mac{0x02, 0x00, 0x5E, 0x10, 0x20, 0x30},
    };
    fake::setText("USER_ADMIN", "Username1", "admin");
    fake::setText("USER_ADMIN", "Password1", "secret");
}

void HandlerTest::SetUp() {
    seedCamera();
    clearFlags();
    setenv("TZ", "UTC0", 1);
    ASSERT_EQ(qvp_function_init("eth0"), 0);
    fake::clearEvents();
}

void HandlerTest::TearDown() {
    std::vector<std::string> uncleared = fake::unclearedReads();
    std::erase(uncleared, "NETWORK_V4 PPPoEEnable");  // read on top of the DDNS flag
    EXPECT_THAT(uncleared, testing::IsEmpty());
    EXPECT_THAT(fake::unclearedWrites(), testing::IsEmpty());
    EXPECT_EQ(fake::openLists(), 0);
    clearFlags();
}

decltype(testing::ValuesIn(std::vector<const Family*>())) bothFamilies() {
    return testing::ValuesIn(std::vector<const Family*>{&primaryFamily(), &landapFamily()});
}

std::string rowName(const testing::TestParamInfo<CommandRow>& info) {
    return info.param.family->name + "_" + info.param.name;
}

std::string familyName(const testing::TestParamInfo<const Family*>& info) { return info.param->name; }

}  // namespace unit
