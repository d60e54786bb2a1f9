// The clock over the wire: reading it, and the settings that a change leaves for later.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "camera/pending_actions.h"
#include "support/handler_test.h"

namespace unit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class GetSystemDatetime : public BothFamilies {
protected:
    void SetUp() override {
        BothFamilies::SetUp();
        fake::setTime(1718454896);  // 2024-06-15 12:34:56 UTC
    }

    const CommandRow& row() const { return BothFamilies::row("get_system_datetime"); }
    Packet bareReply() const { return reply(row()).put(22, std::string("20240615123456")); }
    Outcome ask() const { return call(row().handler, request(row()).bytes()); }
};

TEST_P(GetSystemDatetime, TellsTimeZoneAndServer) {
    fake::setNumber("DATETIME", "TimeZone", 12);
    fake::setFlag("DATETIME", "DayLightSaving", 1);
    fake::setNumber("DATETIME", "Protocol", 1);
    fake::setText("DATETIME", "NTPServerIP", "ntp.example.org");
    fake::camera().wireIds = {{12, 0x1234}};
    const Outcome outcome = ask();
    EXPECT_TRUE(replies(bareReply().put(38, {0x34, 0x12, 1, 1}).put(42, std::string("ntp.example.org")), outcome));
    EXPECT_TRUE(traces(row(), 1, outcome));
}

TEST_P(GetSystemDatetime, OfAnEmptyStoreIsTheTimeAlone) { EXPECT_TRUE(replies(bareReply(), ask())); }

TEST_P(GetSystemDatetime, ReadsInTheOrderOfItsFields) {
    ask();
    EXPECT_THAT(fake::eventsOf({"cfgRead", "get_oem_timezone_id"}),
                ElementsAre("cfgRead USER_ADMIN Username1", "cfgRead USER_ADMIN Password1", "cfgRead DATETIME TimeZone",
                            "get_oem_timezone_id 2 0", "cfgRead DATETIME DayLightSaving", "cfgRead DATETIME Protocol",
                            "cfgRead DATETIME NTPServerIP"));
    EXPECT_THAT(fake::writes(), IsEmpty());
    EXPECT_THAT(raisedFlags(), IsEmpty());
}

TEST_P(GetSystemDatetime, SendsZeroForAZoneWithoutAWireId) {
    fake::camera().wireIds = {{1, 77}, {3, 0}};
    const std::pair<std::int32_t, std::uint8_t> zones[] = {{1, 77}, {2, 0}, {3, 0}, {-1, 0}};
    for (const auto& [zone, wireId] : zones) {
        fake::setNumber("DATETIME", "TimeZone", zone);
        EXPECT_TRUE(replies(bareReply().put(38, {wireId, 0}), ask())) << zone;
    }
}

TEST_P(GetSystemDatetime, PassesDaylightSavingOnAndReducesTheProtocol) {
    for (const std::uint8_t byte : Bytes{0, 1, 2, 255}) {
        fake::setFlag("DATETIME", "DayLightSaving", byte);
        EXPECT_TRUE(replies(bareReply().put(40, {byte}), ask())) << int{byte};
    }
    fake::erase("DATETIME", "DayLightSaving");
    for (const std::int32_t protocol : {0, 1, 2, -1, 257, 0x10000}) {
        fake::setNumber("DATETIME", "Protocol", protocol);
        EXPECT_TRUE(replies(bareReply().put(41, {static_cast<std::uint8_t>(protocol == 1)}), ask())) << protocol;
    }
}

TEST_P(GetSystemDatetime, CutsTheServerAt63Bytes) {
    for (const std::size_t length : {1, 62, 63, 64, 255}) {
        fake::setText("DATETIME", "NTPServerIP", std::string(length, 'n'));
        EXPECT_TRUE(replies(bareReply().fill(42, std::min<std::size_t>(length, 63), 'n'), ask())) << length;
    }
}

TEST_P(GetSystemDatetime, FollowsAChangeOfTheZoneAtOnce) {
    ask();
    setenv("TZ", "JST-9", 1);
    EXPECT_TRUE(replies(reply(row()).put(22, std::string("20240615213456")), ask()));
}

INSTANTIATE_TEST_SUITE_P(Families, GetSystemDatetime, bothFamilies(), familyName);

class SetSystemDatetime : public BothFamilies {
protected:
    void SetUp() override {
        BothFamilies::SetUp();
        fake::camera().wireIds = {{12, 20}, {7, 255}, {9, 0}};
        std::strcpy(g_szDateTime, "before");
    }

    const CommandRow& row() const { return BothFamilies::row("set_system_datetime"); }

    Packet setting(const std::string& time) const {
        return request(row()).put(150, time).put(166, {20, 0, 0, 0}).put(170, std::string("ntp.example.org"));
    }

    Outcome send(const Packet& packet) const { return call(row().handler, packet.bytes()); }

    void expectRefused(const Packet& packet, std::uint8_t code, const std::string& what) const {
        const Packet expected = reply(row()).put(16, {2, 0}).put(22, {code, 0, 0, 0});
        const Outcome outcome = send(packet);
        EXPECT_TRUE(replies(expected, outcome)) << what;
        EXPECT_TRUE(traces(row(), 1, outcome)) << what;
        EXPECT_THAT(fake::writes(), IsEmpty()) << what;
        EXPECT_THAT(raisedFlags(), IsEmpty()) << what;
        EXPECT_STREQ(g_szDateTime, "before") << what;
    }

    void expectTaken(const Packet& packet, const std::string& text, const std::string& what) {
        EXPECT_TRUE(replies(reply(row()), send(packet))) << what;
        EXPECT_EQ(std::string(g_szDateTime), text) << what;
        EXPECT_THAT(raisedFlags(), ElementsAre("g_nResetTime=1")) << what;
        clearFlags();
        std::strcpy(g_szDateTime, "before");
        fake::clearEvents();
    }
};

TEST_P(SetSystemDatetime, StoresTheSettingsAndKeepsTheTimeForLater) {
    const Outcome outcome = send(setting("20240615123456").put(168, {1, 1}));
    EXPECT_TRUE(replies(reply(row()), outcome));
    EXPECT_TRUE(traces(row(), 1, outcome));
    EXPECT_THAT(
        fake::writes(),
        ElementsAre("cfgWrite DATETIME TimeZone number 12 1", "cfgWrite DATETIME DayLightSaving flag 1 1",
                    "cfgWrite DATETIME Protocol number 1 1", R"(cfgWrite DATETIME NTPServerIP "ntp.example.org" 1)"));
    EXPECT_STREQ(g_szDateTime, "2024/06/15 12:34:56");
    EXPECT_THAT(raisedFlags(), ElementsAre("g_nResetTime=1"));
    EXPECT_THAT(fake::eventsOf({"system", "clock_settime", "set_timezone"}), IsEmpty());
}

TEST_P(SetSystemDatetime, StoresZerosForManualTime) {
    send(setting("20240615123456"));
    EXPECT_THAT(
        fake::writes(),
        ElementsAre("cfgWrite DATETIME TimeZone number 12 1", "cfgWrite DATETIME DayLightSaving flag 0 1",
                    "cfgWrite DATETIME Protocol number 0 1", R"(cfgWrite DATETIME NTPServerIP "ntp.example.org" 1)"));
}

TEST_P(SetSystemDatetime, TakesTimesWithinTheirRanges) {
    const std::pair<const char*, const char*> rows[] = {
        {"20240615123456", "2024/06/15 12:34:56"}, {"19700101010101", "1970/01/01 01:01:01"},
        {"21001231235959", "2100/12/31 23:59:59"}, {"20240231010101", "2024/02/31 01:01:01"},
        {"20241201233001", "2024/12/01 23:30:01"}, {"00000000000000", ""},
    };
    for (const auto& [time, text] : rows) expectTaken(setting(time), text, time);
}

TEST_P(SetSystemDatetime, RefusesTimesOutsideTheirRanges) {
    for (const char* time : {
             "19690615123456", "21010615123456", "00000615123456", "99990615123456",                    // year
             "20240015123456", "20241315123456", "20249915123456",                                      // month
             "20240600123456", "20240632123456",                                                        // day
             "20240615003456", "20240615243456",                                                        // hour
             "20240615120056", "20240615126056",                                                        // minute
             "20240615123400", "20240615123460",                                                        // second
             "20240615000000", "20240615100000", "00000000000001", "00000101010101", "19700000000000",  // in part zero
         }) {
        expectRefused(setting(time), 0x65, time);
    }
}

TEST_P(SetSystemDatetime, RefusesTextsThatAreNotSixNumbers) {
    for (const char* time : {"", "2", "2024", "20240615", "202406151234", "x0240615123456", "2024-06-15",
                             "20240615 12:34", "abcdefghijklmn"}) {
        expectRefused(setting(time), 0x65, time);
    }
}

// The six numbers are scanned, not cut: blanks and signs count as scanf takes them, a short last number is a number.
TEST_P(SetSystemDatetime, ReadsTheNumbersAsScanfDoes) {
    const std::pair<const char*, const char*> rows[] = {
        {"2024061512345", "2024/06/15 12:34:05"},
        {"2024061512345x", "2024/06/15 12:34:05"},
        {" 20240615123456", "2024/06/15 12:34:56"},
        {"2024 6 5 1 2 3", "2024/06/05 01:02:03"},
        {"2024+6+5+1+2+3", "2024/06/05 01:02:03"},
        {"000000000000000", ""},
        {"0 0 0 0 0 0", ""},
        {"-0 0 0 0 0 -0", ""},
    };
    for (const auto& [time, text] : rows) expectTaken(setting(time), text, time);
    expectRefused(setting("2024-6-5-1-2-3"), 0x65, "signs");
}

TEST_P(SetSystemDatetime, ReadsTheTimeWithinItsSixteenBytesOnly) {
    // The zone's byte behind the field, '4' here, is no digit of the time.
    fake::camera().wireIds[13] = 0x34;
    const Packet packet = request(row()).put(166, {0x34, 0});
    expectTaken(Packet(packet).put(150, std::string("2024 6 5 1 2   3")), "2024/06/05 01:02:03", "a digit at the end");
    expectRefused(Packet(packet).put(150, std::string("2024 6 5 1 2    ")), 0x65, "no digit at the end");
}

TEST_P(SetSystemDatetime, NeedsAZoneThatTheCameraKnows) {
    const struct {
        Bytes wireId;
        int zone;  // -1: refused
    } rows[] = {{{20, 0}, 12},  {{255, 0}, 7}, {{0, 0}, 9},   {{21, 0}, -1},
                {{254, 0}, -1}, {{0, 1}, -1},  {{20, 1}, -1}, {{255, 255}, -1}};
    for (const auto& zone : rows) {
        SetUp();
        const Packet packet = setting("20240615123456").put(166, zone.wireId);
        if (zone.zone == -1) {
            expectRefused(packet, 0x66, std::to_string(zone.wireId[0]));
        } else {
            EXPECT_TRUE(replies(reply(row()), send(packet)));
            EXPECT_EQ(fake::number("DATETIME", "TimeZone"), zone.zone);
        }
        const fake::Events asked = fake::eventsOf({"get_real_timezone_id"});
        if (zone.wireId[1] == 0) {
            EXPECT_THAT(asked, ElementsAre("get_real_timezone_id 2 " + std::to_string(zone.wireId[0])));
        } else {
            EXPECT_THAT(asked, IsEmpty());
        }
    }
}

TEST_P(SetSystemDatetime, TakesNoughtAndOneForTheTwoSwitches) {
    for (const std::uint8_t byte : Bytes{2, 3, 0x80, 0xFF}) {
        expectRefused(setting("20240615123456").put(168, {byte, 0}), 0x67, "daylight saving");
        expectRefused(setting("20240615123456").put(168, {0, byte}), 0x68, "NTP");
    }
    for (const std::uint8_t dst : Bytes{0, 1}) {
        for (const std::uint8_t ntp : Bytes{0, 1}) {
            expectTaken(setting("20240615123456").put(168, {dst, ntp}), "2024/06/15 12:34:56", "switches");
            EXPECT_EQ(fake::flag("DATETIME", "DayLightSaving"), dst);
            EXPECT_EQ(fake::number("DATETIME", "Protocol"), ntp);
        }
    }
}

TEST_P(SetSystemDatetime, ReportsTheFirstFieldThatIsWrong) {
    const Packet allWrong = setting("20240615000000").put(166, {21, 0, 2, 5});
    expectRefused(allWrong, 0x65, "time");
    expectRefused(Packet(allWrong).put(150, std::string("20240615123456")), 0x66, "zone");
    expectRefused(Packet(allWrong).put(150, std::string("20240615123456")).put(166, {20}), 0x67, "daylight saving");
    expectRefused(Packet(allWrong).put(150, std::string("20240615123456")).put(166, {20, 0, 1}), 0x68, "NTP");
}

TEST_P(SetSystemDatetime, TakesTheServerUpToItsNulAnd255Bytes) {
    const std::string odd = "a \"b\" \xC3\xA4";
    const std::pair<std::string, std::string> servers[] = {
        {"", ""},
        {odd, odd},
        {std::string(63, 'n'), std::string(63, 'n')},
        {std::string(64, 'n'), std::string(64, 'n')},
        {std::string(254, 'n'), std::string(254, 'n')},
        {std::string(255, 'n'), std::string(255, 'n')},
        {std::string(256, 'n'), std::string(255, 'n')},
        {std::string(854, 'n'), std::string(255, 'n')},  // to the datagram's end
    };
    for (const auto& [given, stored] : servers) {
        const Packet packet = setting("00000000000000").fill(170, 854, 0).put(170, given);
        EXPECT_TRUE(replies(reply(row()), send(packet))) << given.size();
        EXPECT_EQ(fake::text("DATETIME", "NTPServerIP"), stored) << given.size();
    }
}

TEST_P(SetSystemDatetime, FollowsNtpWithoutATime) {
    std::strcpy(g_szDateTime, "2020/01/01 01:01:01");
    EXPECT_TRUE(replies(reply(row()), send(setting("00000000000000").put(169, {1}))));
    EXPECT_STREQ(g_szDateTime, "");
    EXPECT_EQ(fake::number("DATETIME", "Protocol"), 1);
}

INSTANTIATE_TEST_SUITE_P(Families, SetSystemDatetime, bothFamilies(), familyName);

}  // namespace
}  // namespace unit
