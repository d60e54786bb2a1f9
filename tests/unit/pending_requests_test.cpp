// Reboot, factory reset, commit: a reply, and a flag for later.
#include "camera/pending_actions.h"
#include "support/handler_test.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Request {
    const Family* family;
    const char* name;
    std::int32_t* flag;
    const char* raised;
    bool blockable;
};

void PrintTo(const Request& request, std::ostream* out) { *out << request.family->name << " " << request.name; }

class PendingRequest : public HandlerTest, public testing::WithParamInterface<Request> {
protected:
    static const CommandRow& row() { return command(*GetParam().family, GetParam().name); }
    static Outcome ask() { return call(row().handler, request(row()).bytes()); }
};

TEST_P(PendingRequest, IsAnsweredAtOnceAndLeftForLater) {
    const Outcome outcome = ask();
    EXPECT_TRUE(replies(reply(row()), outcome));
    EXPECT_TRUE(traces(row(), 1, outcome));
    EXPECT_THAT(raisedFlags(), ElementsAre(GetParam().raised));
    EXPECT_THAT(fake::eventsOf({"cfgWrite", "system"}), IsEmpty());
}

TEST_P(PendingRequest, IsBlockedWithoutAWordWhileAnUpgradeRuns) {
    for (const int state : {-1, 0, 1, 2, 3, 257}) {
        fake::camera().slots = {{4, state}, {3, 1}, {5, 1}};
        *GetParam().flag = 0;
        EXPECT_TRUE(replies(reply(row()), ask())) << state;
        EXPECT_EQ(*GetParam().flag, GetParam().blockable && state == 1 ? 0 : 1) << state;
    }
    EXPECT_THAT(fake::eventsOf({"SIReadInt"}), testing::SizeIs(GetParam().blockable ? 6 : 0));
    EXPECT_THAT(fake::eventsOf({"SIReadInt"}), testing::Each("SIReadInt 4"));
}

TEST_P(PendingRequest, GoesAheadWithoutAnUpgradeState) {
    fake::camera().slots.clear();
    ask();
    EXPECT_EQ(*GetParam().flag, 1);
}

TEST_P(PendingRequest, ThatIsBlockedTakesAnEarlierOneBack) {
    fake::camera().slots[4] = 1;
    *GetParam().flag = 1;
    ask();
    EXPECT_EQ(*GetParam().flag, GetParam().blockable ? 0 : 1);
}

TEST_P(PendingRequest, WithWrongCredentialsLeavesAnEarlierOneAlone) {
    for (const std::int32_t before : {0, 1}) {
        for (const int state : {0, 1}) {
            fake::camera().slots[4] = state;
            *GetParam().flag = before;
            const Packet wrong = request(row()).put(86, std::string("d3Jvbmc="));
            EXPECT_TRUE(replies(reply(row()).put(16, {3}), call(row().handler, wrong.bytes())));
            EXPECT_EQ(*GetParam().flag, before);
        }
    }
}

TEST_P(PendingRequest, RaisesTheFlagAgainWhenItIsPending) {
    ask();
    ask();
    EXPECT_THAT(raisedFlags(), ElementsAre(GetParam().raised));
}

const Request kRequests[] = {
    {&primaryFamily(), "reboot", &g_nReboot, "g_nReboot=1", true},
    {&primaryFamily(), "factory_reset", &g_nFactoryReset, "g_nFactoryReset=1", true},
    {&landapFamily(), "factory_reset", &g_nFactoryReset, "g_nFactoryReset=1", true},
    {&primaryFamily(), "commit_setting", &g_nCommitSetting, "g_nCommitSetting=1", false},
    {&landapFamily(), "commit_setting", &g_nCommitSetting, "g_nCommitSetting=1", false},
};

INSTANTIATE_TEST_SUITE_P(Requests, PendingRequest, testing::ValuesIn(kRequests),
                         [](const auto& test) { return test.param.family->name + "_" + test.param.name; });

}  // namespace
}  // namespace unit
