// The events that are kept, and who is told what is lost.
#include "qvpctl/web/event_log.h"

#include <gtest/gtest.h>

namespace {

Record number(int value) { return {{"n", value}}; }

constexpr size_t kRoom = 4096;

TEST(EventLog, GoesOnBehindTheLastOneSeen) {
    EventLog log(5);
    log.add("one", number(1));
    log.add("two", number(2));
    uint64_t seen = 5;
    EXPECT_EQ(log.after(seen, kRoom), "id: 6\nevent: two\ndata: {\"n\":2}\n\n");
    EXPECT_EQ(seen, 6u);
    EXPECT_EQ(log.after(seen, kRoom), "");
    EXPECT_EQ(log.last(), 6u);
}

TEST(EventLog, TellsThatSomeAreLost) {
    EventLog log(1, 2);
    for (int i = 1; i <= 4; i++) log.add("e", number(i));
    uint64_t lost = 1, kept = 2, future = 5;
    EXPECT_FALSE(log.after(lost, kRoom));
    EXPECT_EQ(log.after(kept, kRoom), "id: 3\nevent: e\ndata: {\"n\":3}\n\nid: 4\nevent: e\ndata: {\"n\":4}\n\n");
    EXPECT_FALSE(log.after(future, kRoom));
    uint64_t most = UINT64_MAX;
    EXPECT_FALSE(log.after(most, kRoom));
}

TEST(EventLog, KeepsNoMoreThanItsBytes) {
    EventLog log(1, 100, 60);
    for (int i = 1; i <= 4; i++) log.add("e", number(i));  // 28 bytes each
    uint64_t lost = 1, kept = 2;
    EXPECT_FALSE(log.after(lost, kRoom));
    EXPECT_TRUE(log.after(kept, kRoom));
}

TEST(EventLog, HandsOutWhatFitsAndAtLeastOne) {
    EventLog log(1);
    for (int i = 1; i <= 3; i++) log.add("e", number(i));
    uint64_t seen = 0;
    EXPECT_EQ(log.after(seen, 1), "id: 1\nevent: e\ndata: {\"n\":1}\n\n");
    EXPECT_EQ(seen, 1u);
}

TEST(EventLog, NothingInATextEndsAnEvent) {
    EXPECT_EQ(EventLog::text(1, "e", {{"t", "a\n\nid: 9\r\xff"}}),
              "id: 1\nevent: e\ndata: {\"t\":\"a\\n\\nid: 9\\r\\ufffd\"}\n\n");
}

}  // namespace
