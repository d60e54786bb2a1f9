// How the loop asks the site-survey pair for page after page.
#include "camera/pending_actions.h"
#include "process/daemon_run.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SiteSurveySequence : public DaemonTest, public testing::WithParamInterface<const Family*> {
protected:
    // One request to a pair of functions that answer like this; the events of the exchange.
    fake::Events exchange(int checkResult, int accepted, const std::vector<int>& fillResults = {}) {
        substitutes() = {};
        substitutes().siteSurvey = true;
        substitutes().checkResult = checkResult;
        substitutes().accepted = accepted;
        substitutes().fillResults = fillResults;
        fake::clearEvents();
        fake::deliver(request(command(*GetParam(), "checkSiteSurveyRequest")).first(150), 5001);
        EXPECT_EQ(runDaemon().status, 0);
        fake::Events events = fake::eventsOf({"sendto", "fill", "system"});
        events.erase(events.begin());  // the report at start-up
        for (std::string& event : events) {
            const std::size_t data = event.find(' ', event.find(' ', event.find(' ') + 1) + 1);
            if (event[0] == 's' && data != std::string::npos) event.erase(data);
        }
        return events;
    }
};

TEST_P(SiteSurveySequence, SendsTheRefusalAlone) {
    EXPECT_THAT(exchange(746, 0), ElementsAre("sendto 192.168.0.100:5001 746"));
    EXPECT_THAT(exchange(0, 0), IsEmpty());
    EXPECT_THAT(exchange(-1, 0), IsEmpty());
}

TEST_P(SiteSurveySequence, SendsPagesWhileThereAreAny) {
    EXPECT_THAT(exchange(746, 1, {746, -1}),
                ElementsAre("fill 0 21844 0", "sendto 192.168.0.100:5001 746", "fill 1 21844 1"));
    // The last number of a fill: the reply buffer is not cleared between the calls.
    EXPECT_THAT(exchange(746, 1, {746, 700, 30, 0}),
                ElementsAre("fill 0 21844 0", "sendto 192.168.0.100:5001 746", "fill 1 21844 1",
                            "sendto 192.168.0.100:5001 700", "fill 2 21844 2", "sendto 192.168.0.100:5001 30",
                            "fill 3 21844 3"));
}

TEST_P(SiteSurveySequence, SendsAnEmptyDatagramWhenThereIsNoFirstPage) {
    EXPECT_THAT(exchange(746, 1, {0}), ElementsAre("fill 0 21844 0", "sendto 192.168.0.100:5001 0"));
}

TEST_P(SiteSurveySequence, SendsNothingThatArrivesWhenTheFirstPageFails) {
    const fake::Events events = exchange(746, 1, {-1});
    EXPECT_EQ(events.front(), "fill 0 21844 0");
    for (const fake::Sent& datagram : fake::sentTo("192.168.0.100:5001")) EXPECT_THAT(datagram.bytes, IsEmpty());
    EXPECT_THAT(events, testing::Not(testing::Contains("sendto 192.168.0.100:5001 0")));
}

TEST_P(SiteSurveySequence, AsksForNoPageWithoutAnAcceptedRequest) {
    EXPECT_THAT(exchange(0, 1, {746}), IsEmpty());
    EXPECT_THAT(exchange(-1, 1, {746}), IsEmpty());
    for (const int accepted : {2, -1, 256}) EXPECT_THAT(exchange(746, accepted, {746}), IsEmpty()) << accepted;
}

TEST_P(SiteSurveySequence, NeverRunsDeferredActions) {
    fake::beforeWait([] { g_nNetworkReset = g_nReboot = 1; });
    EXPECT_THAT(exchange(746, 1, {746}),
                ElementsAre("fill 0 21844 0", "sendto 192.168.0.100:5001 746", "fill 1 21844 1"));
    fake::beforeWait([] { g_nNetworkReset = g_nReboot = 1; });
    EXPECT_THAT(exchange(746, 0), ElementsAre("sendto 192.168.0.100:5001 746"));
}

TEST_P(SiteSurveySequence, OfTheRealPairSendsOneDatagram) {
    const CommandRow& row = command(*GetParam(), "checkSiteSurveyRequest");
    fake::deliver(headerOnly(row), 5001);
    fake::deliver(request(row).first(150), 5002);
    EXPECT_EQ(runDaemon().status, 0);
    const std::vector<fake::Sent> refused = fake::sentTo("192.168.0.100:5001"),
                                  served = fake::sentTo("192.168.0.100:5002");
    ASSERT_EQ(refused.size(), 1u);
    EXPECT_TRUE(sameBytes(reply(row).put(16, {3}).bytes(), refused[0].bytes));
    ASSERT_EQ(served.size(), 1u);
    Packet expected = reply(row);
    for (std::size_t slot = 0; slot < 20; ++slot) expected.put(22 + 36 * slot + 33, {0x00, 0xF1, 0x0F});
    EXPECT_TRUE(sameBytes(expected.put(744, {0xFF, 0xFF}).bytes(), served[0].bytes));
}

INSTANTIATE_TEST_SUITE_P(Families, SiteSurveySequence, bothFamilies(), familyName);

}  // namespace
}  // namespace unit
