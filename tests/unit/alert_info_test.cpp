// Alert information: an answer with nothing in it.
#include "support/handler_test.h"

namespace unit {
namespace {

class AlertInfo : public HandlerTest {
protected:
    static const CommandRow& row() { return command(primaryFamily(), "alert_info"); }
};

TEST_F(AlertInfo, IsAnEmptyReplyWhateverTheRequestHolds) {
    for (const std::uint8_t byte : Bytes{0x00, 0x41, 0xFF}) {
        Packet packet = request(row());
        packet.fill(20, 1004, byte);
        const Outcome outcome = call(row().handler, packet.bytes());
        EXPECT_TRUE(replies(reply(row()), outcome)) << int{byte};
        EXPECT_TRUE(traces(row(), 1, outcome));
    }
}

TEST_F(AlertInfo, AsksNothingOfTheStore) {
    call(row().handler, request(row()).bytes());
    EXPECT_THAT(fake::events(), testing::ElementsAre("net_get_ifaddr eth0"));
    EXPECT_THAT(raisedFlags(), testing::IsEmpty());
}

}  // namespace
}  // namespace unit
