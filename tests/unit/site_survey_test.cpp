// The site survey: asking for a scan, and the pages made of a list.
#include <algorithm>

#include "handlers/qvp_function.h"
#include "landap/landap_function.h"
#include "support/captured_stderr.h"
#include "support/site_list.h"

namespace unit {
namespace {

using testing::IsEmpty;

class ScanRequest : public BothFamilies {};

INSTANTIATE_TEST_SUITE_P(Families, ScanRequest, bothFamilies(), familyName);

TEST_P(ScanRequest, AsksForAScan) {
    const CommandRow& init = row("init_wifi_site_survey");
    const Outcome outcome = call(init.handler, request(init).bytes());
    EXPECT_TRUE(replies(reply(init).put(22, {0, 0, 0, 0, 2, 0, 0, 0, 0x20, 0x4E, 0, 0}), outcome));
    EXPECT_TRUE(traces(init, 1, outcome));
    EXPECT_EQ(raisedFlags(), std::vector<std::string>{"g_nInitSiteSurvey=1"});
    EXPECT_THAT(fake::eventsOf({"cfgWrite", "getSiteList"}), IsEmpty());
}

TEST_P(ScanRequest, SurvivesARequestWithoutANul) {
    fake::erase("USER_ADMIN", "Username1");
    fake::erase("USER_ADMIN", "Password1");
    for (const char* name : {"init_wifi_site_survey", "checkSiteSurveyRequest"}) {
        const Outcome outcome = call(row(name).handler, request(row(name)).fill(22, 1002, 'A').bytes());
        EXPECT_EQ(outcome.length, row(name).replyLength);
        EXPECT_EQ(outcome.reply[16], 0);
    }
}

class ListRequest : public BothFamilies {
protected:
    Outcome ask(const Packet& packet, int& accepted) const {
        const auto handler = GetParam() == &primaryFamily() ? checkSiteSurveyRequest : landap_checkSiteSurveyRequest;
        Outcome outcome{0, Bytes(1024), {}};
        const CapturedStderr quiet;
        outcome.length = handler(packet.bytes().data(), outcome.reply.data(), 1024, &accepted);
        return outcome;
    }
};

INSTANTIATE_TEST_SUITE_P(Families, ListRequest, bothFamilies(), familyName);

TEST_P(ListRequest, TellsWhetherItIsAccepted) {
    const CommandRow& check = row("checkSiteSurveyRequest");
    for (const int before : {0, 1, 7}) {
        int accepted = before;
        EXPECT_TRUE(replies(reply(check), ask(request(check), accepted)));
        EXPECT_EQ(accepted, 1);
        accepted = before;
        const Packet wrong = request(check).put(22, std::string("cm9vdA=="));
        EXPECT_TRUE(replies(reply(check).put(16, {3}), ask(wrong, accepted)));
        EXPECT_EQ(accepted, 0);
        accepted = before;
        for (const std::size_t offset : {0, 1, 6, 11, 18, 19}) {
            EXPECT_TRUE(silent(ask(request(check).put(offset, {0x5A}), accepted)));
        }
        EXPECT_EQ(accepted, before);
    }
    EXPECT_THAT(raisedFlags(), IsEmpty());
    EXPECT_THAT(fake::writes(), IsEmpty());
}

using SiteSurvey = SiteSurveyTest;

INSTANTIATE_TEST_SUITE_P(Families, SiteSurvey, bothFamilies(), familyName);

TEST_P(SiteSurvey, FillsOnePageOfTwentyAndPadsIt) {
    for (const int count : {0, 1, 3, 19, 20, 21, 25, 200}) {
        SCOPED_TRACE(count);
        std::vector<Bytes> entries;
        for (int index = 0; index < std::min(count, 20); ++index) entries.push_back(networkEntry(index));
        const Outcome outcome = fillPadded(networks(count));
        EXPECT_TRUE(replies(paddedPage(entries), outcome));
        EXPECT_THAT(outcome.trace, IsEmpty());
        for (const int page : {1, 2, 10, -1, INT32_MAX}) EXPECT_EQ(fillPadded(networks(count), page).length, -1);
    }
}

TEST_P(SiteSurvey, MarksWhatFollowsOnlyWhenALineFollows) {
    for (int count = 0; count <= 23; ++count) {
        SCOPED_TRACE(count);
        std::vector<Bytes> entries;
        for (int index = 0; index < std::min(count, 20); ++index) entries.push_back(networkEntry(index));
        const std::string text = networks(count);
        if (count == 0) {
            EXPECT_EQ(fill(text).length, -1);
            continue;
        }
        EXPECT_TRUE(replies(page(entries, count > 20), fill(text)));
        EXPECT_TRUE(replies(page(entries, count > 20), fill(text.substr(0, text.size() - 1))));  // no last newline
        if (count < 20) entries.push_back(paddingEntry());
        EXPECT_TRUE(replies(page(entries, count >= 20), fill(text + '\0')));
        EXPECT_TRUE(replies(page(entries, count >= 20), fill(text + std::string(1023, '\0'))));
    }
}

TEST_P(SiteSurvey, TellsPaddingBeforeTheFirstScan) { EXPECT_TRUE(replies(paddedPage({}), fillPadded(""))); }

TEST_P(SiteSurvey, TellsNothingOfNothing) {
    EXPECT_EQ(fill("").length, -1);
    EXPECT_EQ(fill(heading()).length, -1);
    EXPECT_EQ(fill("\n").length, -1);
}

TEST_P(SiteSurvey, LeavesTheReplyAloneWithoutABuffer) {
    const Bytes datagram = request(check()).bytes();
    Bytes buffer(1024, 0x55);
    EXPECT_EQ(fillFunction()(datagram.data(), buffer.data(), 1024, 0, nullptr, 21844), -1);
    EXPECT_TRUE(sameBytes(Bytes(1024, 0x55), buffer));
    EXPECT_THAT(fake::events(), IsEmpty());
}

// A buffer without a single NUL or newline: 21 lines of 1023 bytes and one of 361.
TEST_P(SiteSurvey, ReadsABufferFilledToItsLastByte) {
    std::string text;
    while (text.size() < 21844) text += siteLine().substr(0, 100);
    text.resize(21844);
    const Outcome outcome = fill(text);
    EXPECT_EQ(outcome.length, 746);
    EXPECT_EQ(outcome.reply[744], 0xFF);
    text.assign(21844, 'x');
    const Bytes full = entry(std::string(32, 'x'), 0, 0xF1, 0x0F);
    EXPECT_TRUE(replies(page(std::vector<Bytes>(20, full), true), fill(text)));
    text[21844 - 1] = '\n';
    EXPECT_TRUE(replies(page(std::vector<Bytes>(20, full), true), fill(text)));
}

TEST_P(SiteSurvey, WritesTheWholePageAndNotAByteMore) {
    std::string text = networks(3);
    text.resize(21844);
    Packet expected = paddedPage({networkEntry(0), networkEntry(1), networkEntry(2)}).put(16, {0xAA, 0xAA});
    for (const int capacity : {0, -1, 745, 1024}) {  // not looked at
        Bytes buffer(1024, 0xAA);
        const Bytes datagram = request(check()).bytes();
        EXPECT_EQ(fillFunction()(datagram.data(), buffer.data(), capacity, 0, text.data(), 21844), 746);
        EXPECT_TRUE(sameBytes(expected.bytes(), {buffer.begin(), buffer.begin() + 746}));
        EXPECT_TRUE(sameBytes(Bytes(278, 0xAA), {buffer.begin() + 746, buffer.end()}));
    }
}

TEST_P(SiteSurvey, LooksAtNothingOfTheRequestButItsHeader) {
    std::string text = networks(1);
    fake::camera().interfaces["eth0"].address.reset();
    const Packet odd =
        Packet(1024).put(0, {1, 2, 0x78, 0x56, 0x9A, 0xBC}).put(6, {9, 9, 9, 9, 9, 9, 1, 2, 3, 4, 5, 6, 7, 8});
    Bytes buffer(1024);
    EXPECT_EQ(fillFunction()(odd.bytes().data(), buffer.data(), 1024, 0, text.data(), static_cast<int>(text.size())),
              746);
    Packet expected = page({networkEntry(0)}, false).put(2, {0x78, 0x56, 0x9A, 0xBC}).fill(12, 4, 0).put(18, {7, 8});
    EXPECT_TRUE(sameBytes(expected.bytes(), {buffer.begin(), buffer.begin() + 746}));
    EXPECT_EQ(fake::events(), fake::Events{"net_get_ifaddr eth0"});
}

}  // namespace
}  // namespace unit
