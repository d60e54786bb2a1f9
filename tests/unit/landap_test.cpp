// The second family beside the first: what it does the same, what it does otherwise, what it does not do.
#include <map>
#include <random>

#include "service/dispatch.h"
#include "support/handler_test.h"
#include "support/wireless_rows.h"

namespace unit {
namespace {

using testing::IsEmpty;

// Opcodes that both families serve in the same way, by the name of the handler.
std::vector<std::string> sharedCommands() {
    std::vector<std::string> names;
    for (const CommandRow& row : allCommands()) {
        if (row.family == &landapFamily() && row.name != "discovery" && row.name != "query_support_fun") {
            names.push_back(row.name);
        }
    }
    return names;
}

// What a handler did, without what tells the families apart.
struct Deed {
    int length;
    Bytes reply;
    fake::Events events;
    std::vector<std::string> flags;
    std::size_t traceLines;
    bool operator==(const Deed&) const = default;
};

class Twins : public HandlerTest, public testing::WithParamInterface<std::string> {
protected:
    Deed deed(const Family& family, Packet packet) {
        const CommandRow& row = command(family, GetParam());
        TearDown();
        SetUp();
        fake::camera().region = 0;
        fake::camera().iniFiles["/etc/wifi_channel.ini"] = {{"0", {"0", "1", "2", "3", "6"}}};
        fake::camera().wireIds = {{3, 1}, {4, 2}};
        fake::setTime(1718454896);
        seedWireless();
        fake::setFlag("WIRELESS_REP", "SameWithClient", 1);
        packet.put(18, {family.protocol});
        Outcome outcome = call(row.handler, packet.bytes());
        if (outcome.length > 0) {
            EXPECT_EQ(outcome.reply[18], family.protocol);
            outcome.reply[18] = 0;
        }
        return {outcome.length, outcome.reply, fake::events(), raisedFlags(), outcome.trace.size()};
    }
};

INSTANTIATE_TEST_SUITE_P(Command, Twins, testing::ValuesIn(sharedCommands()),
                         [](const auto& command) { return command.param; });

// A payload of bytes that are mostly small, so that many a request passes its checks.
Packet someRequest(const CommandRow& row, std::mt19937& random) {
    Packet packet = request(row);
    for (std::size_t offset = 150; offset < 1024; ++offset) {
        const auto number = static_cast<std::uint32_t>(random());
        const std::uint32_t byte = number % 8 < 5 ? 0 : number % 8 < 7 ? number >> 8 & 3 : number >> 8 & 0xFF;
        packet.put(offset, {static_cast<std::uint8_t>(byte)});
    }
    if (random() % 4 != 0) packet.put(150, {1});
    if (random() % 16 == 0) packet.put(86, {'x'});
    if (random() % 16 == 0) packet.put(6 + random() % 6, {0x77});
    return packet;
}

TEST_P(Twins, DoTheSame) {
    std::mt19937 random(20240615);
    std::map<int, int> statuses;
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const Packet packet = someRequest(command(primaryFamily(), GetParam()), random);
        const Deed primary = deed(primaryFamily(), packet), second = deed(landapFamily(), packet);
        EXPECT_TRUE(primary == second);
        ++statuses[primary.length < 0 ? -1 : primary.reply[16]];
    }
    EXPECT_GE(statuses[-1], 1);
    EXPECT_GE(statuses[3], 1);
    EXPECT_GE(statuses[0] + statuses[2], 20);
}

TEST_P(Twins, ServeTheirOwnProtocolOnly) {
    for (const Family* family : {&primaryFamily(), &landapFamily()}) {
        const CommandRow& row = command(*family, GetParam());
        for (int protocol = 0; protocol < 0x10000; protocol += protocol < 4 ? 1 : 0xF3D) {
            if (protocol == family->protocol) continue;
            const Bytes bytes{static_cast<std::uint8_t>(protocol & 0xFF), static_cast<std::uint8_t>(protocol >> 8)};
            const Outcome outcome = call(row.handler, request(row).put(18, bytes).bytes());
            EXPECT_TRUE(silent(outcome)) << protocol;
            EXPECT_TRUE(traces(row, 2, outcome)) << protocol;
        }
    }
    EXPECT_THAT(fake::events(), IsEmpty());
    EXPECT_THAT(raisedFlags(), IsEmpty());
}

std::string nameOf(Handler handler) {
    if (handler == nullptr) return "none";
    for (const CommandRow& row : allCommands()) {
        if (row.handler == handler) return row.handlerName();
    }
    return "unknown";
}

TEST(Dispatch, HasTwoFamilies) {
    for (std::uint32_t protocol = 0; protocol < 0x10000; ++protocol) {
        EXPECT_EQ(findFamily(static_cast<std::uint16_t>(protocol)) != nullptr, protocol == 1 || protocol == 2);
    }
    EXPECT_NE(findFamily(1), findFamily(2));
}

TEST(Dispatch, FindsEveryHandlerByItsOpcodeAndNoOther) {
    for (const Family* family : {&primaryFamily(), &landapFamily()}) {
        std::map<std::uint32_t, Handler> wanted;
        for (const CommandRow& row : allCommands()) {
            if (row.family == family && row.opcode != 0xAE) wanted[row.opcode] = row.handler;
        }
        EXPECT_EQ(wanted.size(), family == &primaryFamily() ? 18U : 16U);
        for (std::uint32_t opcode = 0; opcode < 0x10000; ++opcode) {
            const auto row = wanted.find(opcode);
            EXPECT_EQ(nameOf(findFamily(family->protocol)->find(static_cast<std::uint16_t>(opcode))),
                      nameOf(row == wanted.end() ? nullptr : row->second))
                << opcode;
        }
    }
}

}  // namespace
}  // namespace unit
