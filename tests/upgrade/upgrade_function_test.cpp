// The two commands that nothing dispatches, called directly.
#include "upgrade/upgrade_function.h"

#include <string>
#include <vector>

#include "service/dispatch.h"
#include "support/handler_test.h"
#include "upgrade/download_state.h"

namespace unit {
namespace {

using testing::IsEmpty;

class UpgradeFunction : public HandlerTest, public testing::WithParamInterface<CommandRow> {
protected:
    Packet requestOf(int payload, std::uint8_t kind = 0x5A) const {
        const auto low = static_cast<std::uint8_t>(payload & 0xFF);
        const auto high = static_cast<std::uint8_t>(payload >> 8);
        return request(GetParam()).put(20, {low, high, kind});
    }

    Packet replyOf(std::uint8_t kind) const { return reply(GetParam()).put(22, {kind, 1}); }
};

TEST_P(UpgradeFunction, AcknowledgesBothLayouts) {
    for (const int payload : {135, 148}) {
        for (const std::uint8_t kind : Bytes{0, 1, 0x5A, 0x7F, 0x80, 0xFF}) {
            SCOPED_TRACE(std::to_string(payload) + " " + std::to_string(kind));
            const Outcome outcome = call(GetParam().handler, requestOf(payload, kind).bytes());
            EXPECT_EQ(outcome.length, 152);
            EXPECT_TRUE(replies(replyOf(kind), outcome));
            EXPECT_TRUE(traces(GetParam(), 1, outcome));
        }
    }
}

TEST_P(UpgradeFunction, ContentIsNotLookedAt) {
    for (const int payload : {135, 148}) {
        const Outcome outcome = call(GetParam().handler, requestOf(payload, 0xFF).fill(23, 1001, 0xFF).bytes());
        EXPECT_TRUE(replies(replyOf(0xFF), outcome));
    }
    EXPECT_THAT(fake::eventsOf({"cfgRead", "cfgWrite", "Base64dec", "SIWriteInt", "SIReadInt", "system"}), IsEmpty());
    EXPECT_THAT(raisedFlags(), IsEmpty());
    const auto* record = reinterpret_cast<const std::uint8_t*>(&g_stDownThread);
    EXPECT_EQ(Bytes(record, record + sizeof g_stDownThread), Bytes(sizeof g_stDownThread));
}

TEST_P(UpgradeFunction, OtherPayloadLengthsLeaveNothingInTheReply) {
    for (const int payload : {0, 130, 134, 136, 140, 147, 149, 0x8700, 0x9400, 0x0187, 0xFFFF}) {
        fake::clearEvents();
        const Outcome outcome = call(GetParam().handler, requestOf(payload).bytes());
        EXPECT_TRUE(silent(outcome)) << payload;
        EXPECT_TRUE(traces(GetParam(), 1, outcome)) << payload;
        EXPECT_THAT(fake::events(), IsEmpty()) << payload;
    }
}

TEST_P(UpgradeFunction, SelectorIsNotRead) {
    for (const std::uint8_t selector : Bytes{0, 1, 0x77, 0xFF}) {
        const Packet packet = requestOf(135).put(16, {selector, selector});
        EXPECT_TRUE(replies(replyOf(0x5A), call(GetParam().handler, packet.bytes()))) << int{selector};
    }
}

TEST_P(UpgradeFunction, RejectionsAreTraced) {
    struct Row {
        const char* name;
        Packet packet;
    };
    const Row rows[] = {
        {"magic 0", requestOf(135).put(0, {0xFE})},        {"magic 1", requestOf(135).put(1, {0xFE})},
        {"second family", requestOf(135).put(18, {1})},    {"protocol 0", requestOf(135).put(18, {0})},
        {"protocol 0x0102", requestOf(135).put(19, {1})},  {"another device", requestOf(135).put(11, {0x31})},
        {"every device", requestOf(135).fill(6, 6, 0xFF)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        for (const std::uint8_t payload : Bytes{135, 140}) {  // judged behind all of these
            const Outcome outcome = call(GetParam().handler, Packet(row.packet).put(20, {payload}).bytes());
            EXPECT_TRUE(silent(outcome));
            EXPECT_TRUE(traces(GetParam(), 2, outcome));
        }
    }
}

TEST_P(UpgradeFunction, NeedsRoomFor152Bytes) {
    EXPECT_TRUE(replies(replyOf(0x5A), call(GetParam().handler, requestOf(148).bytes(), 152)));
    for (const int capacity : {151, 22, 0}) {
        const Outcome outcome = call(GetParam().handler, requestOf(148).bytes(), capacity);
        EXPECT_TRUE(silent(outcome)) << capacity;
        EXPECT_TRUE(traces(GetParam(), 1, outcome)) << capacity;
    }
}

TEST_P(UpgradeFunction, NoOpcodeReachesIt) {
    for (const std::uint8_t protocol : Bytes{1, 2}) {
        for (int code = 0; code < 0x10000; ++code) {
            ASSERT_NE(findFamily(protocol)->find(static_cast<std::uint16_t>(code)), GetParam().handler) << code;
        }
    }
}

CommandRow rowOf(const char* name, Handler handler) {
    return {&primaryFamily(), name, 0xBEEF, handler, Addressed::ByMac, Needs::Nothing, 152};
}

std::string nameOf(const testing::TestParamInfo<CommandRow>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Commands, UpgradeFunction,
                         testing::Values(rowOf("config_upgrade", config_upgrade),
                                         rowOf("firmware_upgrade", firmware_upgrade)),
                         nameOf);

}  // namespace
}  // namespace unit
