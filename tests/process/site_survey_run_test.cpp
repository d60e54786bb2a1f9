// Through the whole daemon: a scan fills the buffer once its reply is out, and every fetch tells the same.
#include "process/daemon_run.h"
#include "support/site_list.h"

namespace unit {
namespace {

class SiteSurveyRun : public DaemonTest, public testing::WithParamInterface<const Family*> {};

INSTANTIATE_TEST_SUITE_P(Family, SiteSurveyRun, bothFamilies(), familyName);

TEST_P(SiteSurveyRun, ScansAndTellsTheSameToEveryFetch) {
    const Bytes scan = request(command(*GetParam(), "init_wifi_site_survey")).first(150);
    const CommandRow& check = command(*GetParam(), "checkSiteSurveyRequest");
    const Bytes fetch = request(check).first(150);
    fake::camera().siteList = networks(25);
    fake::deliver(scan, 5000);
    fake::deliver(fetch, 5001);
    fake::deliver(fetch, 5002);
    fake::beforeWait([] { fake::camera().siteList = networks(1); });
    fake::deliver(fetch, 5003);
    fake::deliver(scan, 5004);
    fake::deliver(fetch, 5005);
    EXPECT_EQ(runDaemon().status, 0);
    EXPECT_EQ(fake::eventsOf({"getSiteList"}), (fake::Events{"getSiteList 21844", "getSiteList 21844"}));
    Packet many = reply(check).put(744, {0xFF, 0xFF}), one = reply(check).put(744, {0xFF, 0xFF});
    for (int slot = 0; slot < 20; ++slot) {
        const std::size_t offset = 22 + 36 * static_cast<std::size_t>(slot);
        many.put(offset, networkEntry(slot));
        one.put(offset, slot == 0 ? networkEntry(0) : paddingEntry());
    }
    const std::pair<const char*, const Packet*> wanted[] = {{"192.168.0.100:5001", &many},
                                                            {"192.168.0.100:5002", &many},
                                                            {"192.168.0.100:5003", &many},
                                                            {"192.168.0.100:5005", &one}};
    for (const auto& [receiver, packet] : wanted) {
        const std::vector<fake::Sent> received = fake::sentTo(receiver);
        ASSERT_EQ(received.size(), 1U) << receiver;
        EXPECT_TRUE(sameBytes(packet->bytes(), received[0].bytes)) << receiver;
    }
}

}  // namespace
}  // namespace unit
