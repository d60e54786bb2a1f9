// Cameras as they come, fall silent and come again, on a clock of the test's own.
#include "qvpctl/web/camera_table.h"

#include <gmock/gmock.h>

#include "client/text.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

class CameraTableTest : public testing::Test {
protected:
    static client::Found camera(uint32_t number, bool answered = true) {
        client::Found one{};
        one.camera.mac = {{2, 0, 0, static_cast<uint8_t>(number >> 16), static_cast<uint8_t>(number >> 8),
                           static_cast<uint8_t>(number)}};
        one.camera.address = {{192, 0, 2, static_cast<uint8_t>(number)}};
        one.camera.name = "Gate";
        one.camera.brand = answered ? "Brand" : "";
        one.answered = answered;
        one.isNear = true;
        return one;
    }

    bool take(const client::Found& found) { return table.take(found, now, clock); }

    void pass(std::chrono::milliseconds time) {
        now += time;
        clock += std::chrono::duration_cast<std::chrono::seconds>(time).count();
    }

    // What is told of a camera, and the words for what is wrong with it.
    static std::vector<std::string> codes(const Record& record) {
        std::vector<std::string> codes;
        for (const Record& problem : record["problems"]) codes.push_back(problem["code"]);
        return codes;
    }

    CameraTable table;
    CameraTable::Time now{1000s};
    time_t clock = 1000000;
};

TEST_F(CameraTableTest, TellsOfACameraOnce) {
    EXPECT_FALSE(take(camera(1)));
    const auto news = table.news(now);
    ASSERT_EQ(news.size(), 1u);
    EXPECT_EQ(news[0]["mac"], "02:00:00:00:00:01");
    EXPECT_EQ(news[0]["state"], "present");
    pass(300ms);
    take(camera(1));
    EXPECT_THAT(table.news(now), IsEmpty());
}

TEST_F(CameraTableTest, TellsOfANoisyCameraFourTimesASecond) {
    size_t told = 0;
    for (int i = 0; i < 100; i++) {
        client::Found one = camera(1);
        one.camera.name = std::to_string(i);
        take(one);
        told += table.news(now).size();
        pass(10ms);
    }
    EXPECT_EQ(told, 4u);
    pass(250ms);
    const auto last = table.news(now);
    ASSERT_EQ(last.size(), 1u);
    EXPECT_EQ(last[0]["name"], "99");
}

TEST_F(CameraTableTest, ThatACameraIsStillThereIsToldNowAndThen) {
    take(camera(1));
    table.news(now);
    pass(9s);
    take(camera(1));
    EXPECT_THAT(table.news(now), IsEmpty());
    pass(1s);
    take(camera(1));
    EXPECT_EQ(table.news(now).size(), 1u);
}

TEST_F(CameraTableTest, FallsSilentWithoutReportsAndAnswers) {
    take(camera(1));
    table.endSearch({camera(1)}, now);
    table.news(now);
    pass(94s);
    EXPECT_FALSE(table.isDoubtful(now));
    pass(1s);
    EXPECT_TRUE(table.isDoubtful(now));
    EXPECT_THAT(table.news(now), IsEmpty()) << "it answered the last search";
    table.endSearch({}, now);
    EXPECT_FALSE(table.isDoubtful(now));
    const auto news = table.news(now);
    ASSERT_EQ(news.size(), 1u);
    EXPECT_EQ(news[0]["state"], "silent");
    EXPECT_THAT(codes(news[0]), ElementsAre("silent"));
    pass(1s);
    take(camera(1, false));
    EXPECT_EQ(table.news(now).at(0)["state"], "present");
}

TEST_F(CameraTableTest, FallsSilentByTimeAloneAfterASearchWithoutAnAnswer) {
    take(camera(1));
    table.endSearch({}, now);
    table.news(now);
    pass(95s);
    EXPECT_EQ(table.news(now).at(0)["state"], "silent");
}

TEST_F(CameraTableTest, AReportChangesWhatItTellsAndNothingElse) {
    take(camera(1));
    client::Found heard = camera(1, false);
    heard.camera.name = "Yard";
    EXPECT_FALSE(take(heard));
    const Record record = table.news(now).at(0);
    EXPECT_EQ(record["name"], "Yard");
    EXPECT_EQ(record["brand"], "Brand");
    EXPECT_EQ(record["answered"], true);
    heard.camera.address = {{192, 0, 2, 99}};
    EXPECT_TRUE(take(heard)) << "one that has moved is asked";
}

TEST_F(CameraTableTest, OneThatIsOnlyHeardIsAskedOnce) {
    EXPECT_TRUE(take(camera(1, false)));
    EXPECT_THAT(codes(table.news(now).at(0)), IsEmpty());
    EXPECT_FALSE(take(camera(1, false)));
    table.endSearch({}, now);
    pass(1s);
    EXPECT_THAT(codes(table.news(now).at(0)), ElementsAre("only-heard"));
}

TEST_F(CameraTableTest, BothOfAnAddressAreToldAndBothThatItIsOver) {
    client::Found other = camera(2);
    other.camera.address = camera(1).camera.address;
    take(camera(1));
    table.news(now);
    pass(1s);
    take(other);
    auto news = table.news(now);
    ASSERT_EQ(news.size(), 2u);
    EXPECT_THAT(codes(news[0]), ElementsAre("duplicate-address"));
    EXPECT_THAT(codes(news[1]), ElementsAre("duplicate-address"));
    pass(1s);
    take(camera(2));
    news = table.news(now);
    ASSERT_EQ(news.size(), 2u);
    EXPECT_THAT(codes(news[0]), IsEmpty());
    EXPECT_THAT(codes(news[1]), IsEmpty());
}

TEST_F(CameraTableTest, TakesNoMoreThanItsBound) {
    for (uint32_t i = 0; i < 10001; i++) take(camera(i + 1, false));
    EXPECT_EQ(table.present(now).size(), 10000u);
    EXPECT_FALSE(table.find("02:00:00:00:27:11"));
    take(camera(10001));
    EXPECT_TRUE(table.find("02:00:00:00:27:11")) << "who answers takes the place of one that was only heard";
    EXPECT_EQ(table.present(now).size(), 10000u);
    table.endSearch({}, now);
    EXPECT_EQ(table.present(now).size(), 10000u);
    pass(95s);
    take(camera(7));
    table.endSearch({camera(7)}, now);
    EXPECT_EQ(table.present(now).size(), 1u) << "those that are silent make room";
    table.news(now);
}

TEST_F(CameraTableTest, NoisyOnesKeepNobodyWaiting) {
    for (uint32_t i = 0; i < 300; i++) take(camera(i + 1));
    std::set<std::string> told;
    for (int round = 0; round < 2; round++) {
        const auto news = table.news(now);
        EXPECT_EQ(news.size(), 200u);
        for (const Record& one : news) told.insert(one["mac"]);
        pass(300ms);
        for (uint32_t i = 0; i < 200; i++) {
            client::Found one = camera(i + 1);
            one.camera.name = std::to_string(round);
            take(one);
        }
    }
    EXPECT_EQ(told.size(), 300u);
}

}  // namespace
