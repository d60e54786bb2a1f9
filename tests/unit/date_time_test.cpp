// What becomes of the stored clock settings once a set command was answered.
#include "util/date_time.h"

#include <errno.h>
#include <signal.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

#include "support/captured_stderr.h"
#include "support/handler_test.h"
#include "system/signal_window.h"

using fake::Events;

namespace unit {
namespace {

const std::string kRtc = "system /usr/sbin/rtcfg -w 2>/dev/null 1>/dev/null";
const std::string kNotice = "system /usr/sbin/msger camsvr 0 ctimeupdate 0 1 2>/dev/null 1>/dev/null";
const std::string kNtpStop = "system /etc/init.d/ntpc.sh stop 2>/dev/null 1>/dev/null";
const std::string kNtpState = "system /usr/sbin/msger sinfo 0 sntpstate 0 0 2>/dev/null 1>/dev/null";
const std::string kNtpStart = "system /etc/init.d/ntpc.sh start 2>/dev/null 1>/dev/null";

class DateTime : public HandlerTest {
protected:
    void SetUp() override {
        HandlerTest::SetUp();
        sigprocmask(SIG_SETMASK, nullptr, &mask_);
        fake::setNumber("DATETIME", "TimeZone", 5);
    }

    void TearDown() override {
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
        HandlerTest::TearDown();
    }

    // Applies the settings; everything it did to the system, in order.
    Events apply(const char* text) {
        fake::clearEvents();
        const CapturedStderr captured;
        reset_datetime(text);
        trace_ = captured.text();
        return fake::eventsOf({"set_timezone", "system", "clock_settime", "sleep"});
    }

    void setRule(const std::string& offset, const std::string& start, const std::string& stop) {
        fake::setFlag("DATETIME", "DayLightSaving", 1);
        fake::setText("DATETIME", "Offset", offset);
        fake::setText("DATETIME", "Starttime", start);
        fake::setText("DATETIME", "Stoptime", stop);
    }

    sigset_t mask_;
    std::string trace_;
};

TEST_F(DateTime, OfANullTextIsNothing) {
    EXPECT_EQ(apply(nullptr), Events{});
    EXPECT_EQ(fake::events(), Events{});
}

TEST_F(DateTime, OfAnEmptyTextAppliesTheZoneAlone) {
    EXPECT_EQ(apply(""), (Events{"set_timezone 0 5 0 null", kNotice}));
    EXPECT_EQ(trace_, "");
}

TEST_F(DateTime, ByHandSetsTheClockBetweenTwoNotices) {
    EXPECT_EQ(apply("2024/06/15 12:34:56"), (Events{"set_timezone 0 5 0 null", kNotice, kNtpStop,
                                                    "clock_settime 1718454896", kRtc, kNotice, kNotice}));
    EXPECT_EQ(trace_, "stop ntpclient\n");
}

TEST_F(DateTime, ByHandGoesOnWhenTheClockCannotBeSet) {
    fake::failCall("clock_settime", 1, EPERM);
    EXPECT_EQ(apply("2024/06/15 12:34:56"),
              (Events{"set_timezone 0 5 0 null", kNotice, kNtpStop, "clock_settime 1718454896", kNotice}));
    fake::failCall("mktime", 1, EOVERFLOW);
    EXPECT_EQ(apply("2024/06/15 12:34:56"), (Events{"set_timezone 0 5 0 null", kNotice, kNtpStop, kNotice}));
}

TEST_F(DateTime, ByNtpRestartsTheClientAndWaitsEightSeconds) {
    fake::setNumber("DATETIME", "Protocol", 1);
    for (const char* text : {"", "2024/06/15 12:34:56"}) {
        const std::int64_t before = fake::slept();
        Events events = apply(text);
        events.back() = events.back().substr(0, 5);
        EXPECT_EQ(events, (Events{"set_timezone 0 5 0 null", kNotice, kNtpStop, kNtpState, kNtpStart, "sleep"}));
        EXPECT_EQ(trace_, "start ntpclient\n");
        EXPECT_NEAR(static_cast<double>(fake::slept() - before), 8e9, 1e9);
    }
}

TEST_F(DateTime, ByNtpWaitsTheWholeTimeThroughSignals) {
    fake::setNumber("DATETIME", "Protocol", 1);
    signal(SIGALRM, [](int) {});
    const std::int64_t before = fake::slept();
    fake::interruptSleep(1, SIGALRM);
    const Events events = apply("");
    EXPECT_EQ(events.size(), 7u);  // two sleeps
    EXPECT_NEAR(static_cast<double>(fake::slept() - before), 8e9, 1e9);
    signal(SIGALRM, SIG_DFL);
}

volatile std::sig_atomic_t g_arrived;

TEST_F(DateTime, ByNtpLetsSignalsInOnlyWhileItWaits) {
    fake::setNumber("DATETIME", "Protocol", 1);
    g_arrived = 0;
    signal(SIGALRM, [](int) { g_arrived = g_arrived + 1; });
    blockSignals();
    fake::onEvent("sleep ", [] { raise(SIGALRM); });
    apply("");
    EXPECT_EQ(g_arrived, 1);
    raise(SIGALRM);
    EXPECT_EQ(g_arrived, 1);
    signal(SIGALRM, SIG_IGN);  // forgets the one that is pending
    signal(SIGALRM, SIG_DFL);
}

TEST_F(DateTime, FollowsNtpForProtocolOneOnly) {
    for (const std::int32_t protocol : {0, 2, -1, 257}) {
        fake::setNumber("DATETIME", "Protocol", protocol);
        EXPECT_EQ(apply(""), (Events{"set_timezone 0 5 0 null", kNotice})) << protocol;
    }
}

TEST_F(DateTime, ReadsItsSettingsFirst) {
    apply("");
    EXPECT_EQ(fake::eventsOf({"cfgRead"}),
              (Events{"cfgRead DATETIME TimeZone", "cfgRead DATETIME DayLightSaving", "cfgRead DATETIME Protocol"}));
    fake::setFlag("DATETIME", "DayLightSaving", 1);
    apply("");
    EXPECT_EQ(fake::eventsOf({"cfgRead"}),
              (Events{"cfgRead DATETIME TimeZone", "cfgRead DATETIME DayLightSaving", "cfgRead DATETIME Protocol",
                      "cfgRead DATETIME DstAuto", "cfgRead DATETIME Offset", "cfgRead DATETIME Starttime",
                      "cfgRead DATETIME Stoptime"}));
}

TEST_F(DateTime, LeavesAutomaticDaylightSavingToTheZone) {
    setRule("", "", "");
    for (const std::uint8_t on : Bytes{1, 2, 255}) {
        fake::setFlag("DATETIME", "DayLightSaving", on);
        fake::setFlag("DATETIME", "DstAuto", on);
        EXPECT_EQ(apply(""), (Events{"set_timezone 0 5 1 null", kNotice})) << int{on};
    }
}

TEST_F(DateTime, HandsTheRuleOnAsElevenNumbers) {
    const struct {
        const char *offset, *start, *stop, *rule;
    } rows[] = {
        {"-00:30", "M3.5.0/2:0:0", "M10.5.0/3:0:0", "-30,3,5,0,2,0,10,5,0,3,0"},
        {"+01:00", "M3.2.0/2:0:0", "M11.1.0/2:0:0", "60,3,2,0,2,0,11,1,0,2,0"},
        {"01:00", "M10.1.0/2:0:0", "M4.1.0/3:0:0", "60,10,1,0,2,0,4,1,0,3,0"},
        {"-01:30", "M3.5.6/23:59:59", "M9.4.5/0:1:7", "-90,3,5,6,23,59,9,4,5,0,1"},
        {"+00:20", "M03.05.00/02:05:00", "M10.5.0/3:0:0 tail", "20,3,5,0,2,5,10,5,0,3,0"},
        {"x2:15", "M99.-1.7/25:61:0", "M0.0.0/-1:0:0", "135,99,-1,7,25,61,0,0,0,-1,0"},
        {"+ 1: 5", "M 3. 5. 0/ 2: 0: 0", "M10.5.0/3:0:0", "65,3,5,0,2,0,10,5,0,3,0"},
        {"--1:10", "M3.5.0/2:0:0", "M10.5.0/3:0:0", "50,3,5,0,2,0,10,5,0,3,0"},
    };
    for (const auto& row : rows) {
        setRule(row.offset, row.start, row.stop);
        EXPECT_EQ(apply(""), (Events{std::string("set_timezone 0 5 2 ") + row.rule, kNotice})) << row.offset;
    }
}

TEST_F(DateTime, EndsEarlyForARuleThatCannotBeRead) {
    const std::string start = "M3.5.0/2:0:0", stop = "M10.5.0/3:0:0";
    const struct {
        std::string offset, start, stop;
    } rows[] = {
        {"", start, stop},
        {"+", start, stop},
        {"1", start, stop},
        {"+1", start, stop},
        {"+1:", start, stop},
        {"+:30", start, stop},
        {"+1.30", start, stop},
        {":30", start, stop},
        {"+x:30", start, stop},
        {"+1:00", "", stop},
        {"+1:00", "M3.5.0/2:0", stop},
        {"+1:00", "3.5.0/2:0:0", stop},
        {"+1:00", "m3.5.0/2:0:0", stop},
        {"+1:00", " M3.5.0/2:0:0", stop},
        {"+1:00", "M3.5.0 2:0:0", stop},
        {"+1:00", "M3-5-0/2:0:0", stop},
        {"+1:00", "M4294967299.5.0/2:0:0", stop},
        {"+1:00", start, "M10.5.0/3:0:4294967296"},
        {"+4294967297:00", start, stop},
        {"+1:00", start, ""},
        {"+1:00", start, "M10.5.0/3:0"},
        {"+1:00", start, "M10.5/3:0:0"},
        {"+1:00", start, "J60/3:0:0"},
    };
    for (const std::int32_t protocol : {0, 1}) {
        fake::setNumber("DATETIME", "Protocol", protocol);
        for (const auto& row : rows) {
            setRule(row.offset, row.start, row.stop);
            EXPECT_EQ(apply("2024/06/15 12:34:56"), Events{}) << row.offset << " " << row.start << " " << row.stop;
            EXPECT_EQ(trace_, "");
        }
    }
}

TEST_F(DateTime, SurvivesRulesOfAnyLengthAndSize) {
    setRule(std::string(255, '9'), std::string(255, 'M'), std::string(255, '.'));
    EXPECT_EQ(apply(""), Events{});
    setRule("+99999999:99999999", "M3.5.0/2:0:0", "M10.5.0/3:0:0");
    EXPECT_THAT(apply(""), testing::SizeIs(2));
    setRule("+-2147483648:0", "M3.5.0/2:0:0", "M10.5.0/3:0:0");
    EXPECT_THAT(apply(""), testing::SizeIs(2));
    setRule("-" + std::string(40, '9') + ":1", "M3.5.0/2:0:0", "M10.5.0/3:0:0");
    apply("");
}

// 15 bytes of the offset count, 31 of each date: what stands behind is not read.
TEST_F(DateTime, CutsTheTextsOfARule) {
    const std::string date = "M3.5.0/2:0:0", numbers = "3,5,0,2,0,3,5,0,2,0";
    const std::pair<std::string, std::string> offsets[] = {
        {"+01:00000000030", "90"}, {"+01:000000000030", "63"}, {"-01:0000000000030", "-60"}};
    for (const auto& [offset, minutes] : offsets) {
        setRule(offset, date, date);
        EXPECT_EQ(apply(""), (Events{"set_timezone 0 5 2 " + minutes + "," + numbers, kNotice})) << offset;
    }
    const std::string longest = "M3.5.0/2:0:" + std::string(19, ' ') + "7";
    const std::string tooLong = "M3.5.0/2:0:" + std::string(20, ' ') + "7";
    setRule("+01:00", longest, longest);
    EXPECT_EQ(apply(""), (Events{"set_timezone 0 5 2 60," + numbers, kNotice}));
    setRule("+01:00", tooLong, date);
    EXPECT_EQ(apply(""), Events{});
    setRule("+01:00", date, tooLong);
    EXPECT_EQ(apply(""), Events{});
}

TEST_F(DateTime, IgnoresAZoneThatCannotBeSet) {
    fake::failCall("set_timezone", 1, EACCES);
    EXPECT_EQ(apply(""), (Events{"set_timezone 0 5 0 null", kNotice}));
}

TEST_F(DateTime, ReadsTheTextInTheZoneJustSet) {
    fake::camera().zoneTexts = {{5, "CET-1CEST,M3.5.0,M10.5.0/3"}};
    const Events events = apply("2024/06/15 12:34:56");
    EXPECT_THAT(events, testing::Contains("clock_settime 1718447696"));  // 10:34:56 UTC
}

class SetClock : public HandlerTest {
protected:
    Events set(const char* text, int expected) {
        fake::clearEvents();
        EXPECT_EQ(set_current_date_time(text), expected) << text;
        return fake::events();
    }
};

TEST_F(SetClock, ReadsTheFieldsByPosition) {
    const std::pair<const char*, const char*> rows[] = {
        {"2024/06/15 12:34:56", "1718454896"},
        {"2024-06-15T12.34.56", "1718454896"},
        {"2024x06x15x12x34x56 and more", "1718454896"},
        {"2024/06/15 12:34:567", "1718454896"},
        {"1970/01/01 00:00:01", "1"},
        {"2024/02/30 10:00:00", "1709287200"},  // 1 March
        {"2024/02/29 10:00:00", "1709200800"},
        {"2023/12/31 23:59:60", "1704067200"},  // the next year
        {"2024/6 /5  1 :2 :3 ", "1717549323"},  // atoi stops at the blank
        {"1969/12/31 23:59:58", "-2"},
    };
    for (const auto& [text, seconds] : rows) {
        EXPECT_EQ(set(text, 0), (Events{std::string("clock_settime ") + seconds, kRtc, kNotice})) << text;
    }
}

// A buffer may still hold the rest of an earlier, longer text.
TEST_F(SetClock, TakesNoughtForWhatTheTextDoesNotReach) {
    const std::pair<std::string, const char*> rows[] = {
        {"2024/06/15", "1718409600"},
        {"2024/06/15 1", "1718413200"},
        {"2024/06/15 12:34:5", "1718454845"},
    };
    for (const auto& [text, seconds] : rows) {
        char buffer[256] = "9999999999999999999";
        std::memcpy(buffer, text.c_str(), text.size() + 1);
        EXPECT_EQ(set(buffer, 0), (Events{std::string("clock_settime ") + seconds, kRtc, kNotice})) << text;
    }
}

TEST_F(SetClock, LetsTheZoneDecideAboutDaylightSaving) {
    setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    EXPECT_THAT(set("2024/07/04 12:00:00", 0), testing::Contains("clock_settime 1720108800"));
    EXPECT_THAT(set("2024/01/04 12:00:00", 0), testing::Contains("clock_settime 1704387600"));
    setenv("TZ", "UTC0", 1);
    EXPECT_THAT(set("2024/01/04 12:00:00", 0), testing::Contains("clock_settime 1704369600"));
}

TEST_F(SetClock, FailsWithoutACommand) {
    fake::failCall("mktime", 1, EOVERFLOW);
    EXPECT_EQ(set("2024/06/15 12:34:56", -1), Events{});
    EXPECT_EQ(set("1969/12/31 23:59:59", -1), Events{});  // mktime's -1 is a time here, but looks like its failure
    fake::failCall("clock_settime", 1, EPERM);
    EXPECT_EQ(set("2024/06/15 12:34:56", -1), (Events{"clock_settime 1718454896"}));
}

}  // namespace
}  // namespace unit
