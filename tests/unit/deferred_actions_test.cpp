// What runs once a reply has left: which commands each flag stands for, and in which order.
#include "service/deferred_actions.h"

#include <signal.h>

#include <cstdio>
#include <vector>

#include "camera/pending_actions.h"
#include "service/service_state.h"
#include "support/captured_stderr.h"
#include "support/handler_test.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string kReboot = "/var/reboot -d 5 2>/dev/null 1>/dev/null&";

struct Action {
    const char* name;
    std::int32_t* flag;
    std::vector<std::string> events;
};

// In the order of a pass; reset_datetime stands with what it does first for settings that it cannot read.
const std::vector<Action>& actions() {
    static const std::vector<Action> list{
        {"PPPoE", &g_nPppoeRestart, {"system /etc/init.d/pppoe.sh restart 2>/dev/null 1>/dev/null"}},
        {"SiteSurvey", &g_nInitSiteSurvey, {"getSiteList 21844"}},
        {"DeviceName",
         &g_nDeviceNameReset,
         {"system /etc/init.d/llmnr-0 restart 2>/dev/null 1>/dev/null",
          "system /etc/init.d/bonjour-0 restart 2>/dev/null 1>/dev/null"}},
        {"Auth",
         &g_nAuthReset,
         {"system /etc/init.d/rtmpd-0 stop 2>/dev/null 1>/dev/null",
          "system /etc/init.d/rtspd-0 stop 2>/dev/null 1>/dev/null",
          "system /etc/init.d/httpd-0 reload 2>/dev/null 1>/dev/null",
          "system /etc/init.d/https-0 reload 2>/dev/null 1>/dev/null",
          "system /etc/init.d/rtspd-0 start 2>/dev/null 1>/dev/null",
          "system /etc/init.d/rtmpd-0 start 2>/dev/null 1>/dev/null"}},
        {"Wifi", &g_nWifiReset, {"system /usr/sbin/msger httpdmgr 0 reset_wifi 0 0 2>/dev/null 1>/dev/null&"}},
        {"WebServer", &g_nWebServerReset, {"system /usr/sbin/msger httpdmgr 0 hrestart 0 0 2>/dev/null 1>/dev/null"}},
        {"Network", &g_nNetworkReset, {"system /etc/init.d/ipv4 restart 2>/dev/null 1>/dev/null"}},
        {"Time",
         &g_nResetTime,
         {"cfgRead DATETIME TimeZone", "cfgRead DATETIME DayLightSaving", "cfgRead DATETIME Protocol",
          "set_timezone 0 0 0 null", "system /usr/sbin/msger camsvr 0 ctimeupdate 0 1 2>/dev/null 1>/dev/null"}},
        {"Commit", &g_nCommitSetting, {}},
        {"FactoryReset",
         &g_nFactoryReset,
         {"system /etc/init.d/userconfig reset 1>/dev/null 2>/dev/null", "system " + kReboot}},
        {"Reboot", &g_nReboot, {"system " + kReboot}},
    };
    return list;
}

class DeferredActions : public HandlerTest {
protected:
    void SetUp() override {
        HandlerTest::SetUp();
        sigprocmask(SIG_SETMASK, nullptr, &mask_);
        sites_.assign(21844, 'x');
        g_pSiteSurveyBuffer = sites_.data();
    }

    void TearDown() override {
        g_pSiteSurveyBuffer = nullptr;
        signal(SIGUSR1, SIG_DFL);
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
        HandlerTest::TearDown();
    }

    static void run() {
        const CapturedStderr captured;
        runDeferredActions();
    }

    sigset_t mask_;
    std::vector<char> sites_;
};

TEST_F(DeferredActions, AreNoneWithoutAFlag) {
    run();
    EXPECT_THAT(fake::events(), IsEmpty());
}

TEST_F(DeferredActions, RunOncePerFlagWhateverItsValue) {
    for (const std::int32_t value : {1, 2, -1, 256, 0x10000}) {
        for (const Action& action : actions()) {
            sites_.assign(21844, 'x');
            fake::clearEvents();
            *action.flag = value;
            run();
            EXPECT_THAT(fake::events(), ElementsAreArray(action.events)) << action.name << " " << value;
            EXPECT_THAT(raisedFlags(), IsEmpty()) << action.name;
            fake::clearEvents();
            run();
            EXPECT_THAT(fake::events(), IsEmpty()) << action.name;
        }
    }
}

TEST_F(DeferredActions, RunTogetherInTheirFixedOrder) {
    std::vector<std::string> expected;
    for (const Action& action : actions()) {
        *action.flag = 1;
        expected.insert(expected.end(), action.events.begin(), action.events.end());
    }
    run();
    EXPECT_THAT(fake::events(), ElementsAreArray(expected));
    EXPECT_THAT(raisedFlags(), IsEmpty());
}

TEST_F(DeferredActions, RunInPairsInTheirFixedOrder) {
    for (std::size_t first = 0; first < actions().size(); ++first) {
        for (std::size_t second = first + 1; second < actions().size(); ++second) {
            sites_.assign(21844, 'x');
            fake::clearEvents();
            *actions()[second].flag = 1;
            *actions()[first].flag = 1;
            run();
            std::vector<std::string> expected = actions()[first].events;
            expected.insert(expected.end(), actions()[second].events.begin(), actions()[second].events.end());
            EXPECT_THAT(fake::events(), ElementsAreArray(expected));
        }
    }
}

TEST_F(DeferredActions, RebootTwiceAfterAFactoryResetAndAReboot) {
    g_nFactoryReset = g_nReboot = 1;
    run();
    EXPECT_THAT(fake::commands(),
                ElementsAre("/etc/init.d/userconfig reset 1>/dev/null 2>/dev/null", kReboot, kReboot));
}

// The other flags are cleared once their last command has run.
TEST_F(DeferredActions, OfAFactoryResetAreDoneBeforeItsReboot) {
    const std::pair<const char*, const char*> rows[] = {
        {"system /etc/init.d/userconfig", "flags 1 1"},
        {"system /var/reboot", "flags 0 1"},
    };
    for (const auto& [command, flags] : rows) {
        fake::clearEvents();
        g_nFactoryReset = g_nReboot = 1;
        fake::onEvent(command, [] {
            fake::record("flags " + std::to_string(g_nFactoryReset) + " " + std::to_string(g_nReboot));
        });
        run();
        EXPECT_EQ(fake::eventsOf({"flags"}).front(), flags) << command;
    }
}

TEST_F(DeferredActions, FillTheSiteListAfresh) {
    fake::camera().siteList = "Ch  SSID\n6   net\n";
    g_nInitSiteSurvey = 1;
    run();
    EXPECT_THAT(fake::events(), ElementsAre("getSiteList 21844"));  // into a zeroed buffer
    std::string expected = "Ch  SSID\n6   net\n";
    expected.resize(21844);
    EXPECT_TRUE(sameBytes(Bytes(expected.begin(), expected.end()), Bytes(sites_.begin(), sites_.end())));
}

TEST_F(DeferredActions, LeaveTheSiteListEmptyWhenTheScanFails) {
    g_nInitSiteSurvey = 1;
    run();
    EXPECT_TRUE(sameBytes(Bytes(21844), Bytes(sites_.begin(), sites_.end())));
}

TEST_F(DeferredActions, OfAnAdministratorChangeIgnoreUserOneBeforeAnyCommand) {
    signal(SIGUSR1, SIG_DFL);
    g_nAuthReset = 1;
    fake::onEvent("system /etc/init.d/rtmpd-0 stop", [] {
        struct sigaction action = {};
        sigaction(SIGUSR1, nullptr, &action);
        fake::record(action.sa_handler == SIG_IGN ? "ignored by then" : "not ignored");
    });
    run();
    EXPECT_THAT(fake::events(), testing::Contains("ignored by then"));
    struct sigaction after = {};
    sigaction(SIGUSR1, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
}

TEST_F(DeferredActions, OfOtherFlagsLeaveUserOneAlone) {
    signal(SIGUSR1, SIG_DFL);
    for (const Action& action : actions()) *action.flag = action.flag == &g_nAuthReset ? 0 : 1;
    run();
    struct sigaction after = {};
    sigaction(SIGUSR1, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_DFL);
}

TEST_F(DeferredActions, HandTheDateTimeTextOn) {
    std::snprintf(g_szDateTime, sizeof g_szDateTime, "%s", "2024/06/15 12:34:56");
    g_nResetTime = 1;
    run();
    EXPECT_THAT(fake::eventsOf({"clock_settime"}), ElementsAre("clock_settime 1718454896"));
}

}  // namespace
}  // namespace unit
