// How many trace lines a refusal leaves, for every way that every command refuses: one at the entry, one more where
// nothing is answered, none more where the answer itself tells.
#include <map>
#include <set>

#include "support/handler_test.h"

namespace unit {
namespace {

// Bytes put into a request at an offset.
using Change = std::vector<std::pair<std::size_t, Bytes>>;

Packet changed(Packet packet, const Change& change) {
    for (const auto& [offset, bytes] : change) packet.put(offset, bytes);
    return packet;
}

// What a command's request must hold for status 0.
const std::map<std::string, Change> kAcceptable = {
    {"set_basic_info", {{218, {80, 0}}}},
    {"set_system_datetime", {{150, Bytes(14, '0')}, {166, {20, 0}}}},
    {"set_wifi_info", {{150, {1, 6}}}},
    {"set_simple_wifi_info", {{150, {1}}}},
};

struct Silent {
    const char* name;
    Change change;
    std::size_t traces;
};

const Silent kSilentForAll[] = {
    {"magic", {{0, {0xFE}}}, 2},
    {"protocol", {{18, {9}}}, 2},
    {"MAC", {{11, {0x31}}, {16, {0x77, 0x77}}}, 2},
};

const Silent kSilentWithASelector[] = {
    {"MAC under selector 0", {{11, {0x31}}, {16, {0, 0}}}, 2},
    {"selector", {{16, {1, 0}}}, 1},
};

struct Answered {
    const char* command;
    int code;  // 0: none told
    Change change;
};

const Answered kAnswered[] = {
    {"set_basic_info", 3, {{218, {0, 0}}}},      {"set_basic_info", 3, {{218, {0x98, 0x1F}}}},
    {"set_basic_info", 8, {{238, {2}}}},         {"set_network_adv_info", 0, {{150, {2}}}},
    {"set_network_adv_info", 304, {{281, {1}}}}, {"set_system_datetime", 101, {{150, Bytes(14, '9')}}},
    {"set_system_datetime", 102, {{166, {21}}}}, {"set_system_datetime", 102, {{166, {20, 1}}}},
    {"set_system_datetime", 103, {{168, {2}}}},  {"set_system_datetime", 104, {{169, {2}}}},
    {"set_wifi_info", 201, {{150, {0}}}},        {"set_wifi_info", 202, {{151, {7}}}},
    {"set_wifi_info", 204, {{188, {0x02}}}},     {"set_wifi_info", 205, {{188, {0x50}}}},
    {"set_wifi_info", 206, {{189, {0x02}}}},     {"set_wifi_info", 207, {{189, {0x20}}}},
    {"set_wifi_info", 208, {{190, {0x02}}}},     {"set_wifi_info", 212, {{190, {0x40}}}},
    {"set_wifi_info", 211, {{188, {0x10}}}},     {"set_wifi_info", 210, {{188, {0x20}}}},
    {"set_simple_wifi_info", 201, {{150, {0}}}}, {"set_simple_wifi_info", 204, {{187, {2}}}},
    {"set_simple_wifi_info", 205, {{190, {5}}}}, {"set_simple_wifi_info", 206, {{189, {2}}}},
    {"set_simple_wifi_info", 211, {{190, {1}}}}, {"set_simple_wifi_info", 210, {{190, {2}}}},
};

class RefusalTraces : public HandlerTest, public testing::WithParamInterface<CommandRow> {
protected:
    void SetUp() override {
        HandlerTest::SetUp();
        fake::camera().wireIds = {{12, 20}};
        fake::camera().region = 1;
        fake::camera().iniFiles["/etc/wifi_channel.ini"] = {{"1", {"6"}}};
    }

    const CommandRow& row() const { return GetParam(); }

    Packet good() const {
        const auto found = kAcceptable.find(row().name);
        return found == kAcceptable.end() ? request(row()) : changed(request(row()), found->second);
    }

    Outcome send(const Change& change, int capacity = 1024) const {
        return call(row().handler, changed(good(), change).bytes(), capacity);
    }

    std::vector<Silent> silentRefusals() const {
        std::vector<Silent> all(std::begin(kSilentForAll), std::end(kSilentForAll));
        if (row().addressed == Addressed::ByMacOrBroadcast) {
            all.insert(all.end(), std::begin(kSilentWithASelector), std::end(kSilentWithASelector));
        }
        return all;
    }
};

TEST_P(RefusalTraces, WithoutAnAnswer) {
    for (const Silent& refusal : silentRefusals()) {
        SCOPED_TRACE(refusal.name);
        const Outcome outcome = send(refusal.change);
        EXPECT_TRUE(silent(outcome));
        EXPECT_TRUE(traces(row(), refusal.traces, outcome));
    }
    const Outcome outcome = send({}, row().replyLength - 1);
    EXPECT_TRUE(silent(outcome));
    EXPECT_TRUE(traces(row(), 1, outcome));
}

// The line says which check it was: no two share one, nor that of the entry.
TEST_P(RefusalTraces, TellTheChecksApart) {
    std::set<std::string> lines;
    std::size_t traced = 0;
    for (const Silent& refusal : silentRefusals()) {
        const Outcome outcome = send(refusal.change);
        ASSERT_EQ(outcome.trace.size(), refusal.traces) << refusal.name;
        lines.insert(outcome.trace.front());
        if (refusal.traces == 2) lines.insert(outcome.trace.back());
        traced += refusal.traces - 1;
    }
    EXPECT_EQ(lines.size(), 1 + traced);
}

TEST_P(RefusalTraces, WithAnAnswer) {
    const Outcome accepted = send({});
    EXPECT_EQ(accepted.reply[16], 0);
    EXPECT_TRUE(traces(row(), 1, accepted));
    if (row().needs != Needs::Nothing) {
        const Outcome outcome = send({{20, {1}}, {22, {'x'}}});
        EXPECT_TRUE(replies(reply(row()).put(16, {3}), outcome));
        EXPECT_TRUE(traces(row(), 1, outcome));
    }
    for (const Answered& refusal : kAnswered) {
        if (row().name != refusal.command) continue;
        SCOPED_TRACE(refusal.code);
        const Outcome outcome = send(refusal.change);
        const auto low = static_cast<std::uint8_t>(refusal.code & 0xFF);
        const auto high = static_cast<std::uint8_t>(refusal.code >> 8);
        EXPECT_TRUE(replies(reply(row()).put(16, {2}).put(22, {low, high}), outcome));
        EXPECT_TRUE(traces(row(), 1, outcome));
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, RefusalTraces, testing::ValuesIn(allCommands()), rowName);

}  // namespace
}  // namespace unit
