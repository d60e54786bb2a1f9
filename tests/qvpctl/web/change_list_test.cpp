// The changes that are under way, and how many of those before are remembered.
#include "qvpctl/web/change_list.h"

#include <gtest/gtest.h>

namespace {

constexpr ChangeList::Time kNow{};

TEST(ChangeList, ACameraIsHeldByOneAtATime) {
    ChangeList changes;
    const auto first = changes.begin("02:00:00:00:00:01", ChangeKind::Settings);
    ASSERT_TRUE(first);
    EXPECT_FALSE(changes.begin("02:00:00:00:00:01", ChangeKind::Reboot));
    EXPECT_FALSE(changes.hold("02:00:00:00:00:01"));
    EXPECT_TRUE(changes.hold("02:00:00:00:00:02"));
    changes.end(*first, {}, kNow);
    EXPECT_TRUE(changes.begin("02:00:00:00:00:01", ChangeKind::Reboot));
}

TEST(ChangeList, OfThoseThatAreOverTheLastAreKept) {
    ChangeList changes;
    ASSERT_TRUE(changes.begin("02:00:00:00:00:01", ChangeKind::Settings));
    for (int i = 0; i < 200; i++) {
        const auto id = changes.begin("02:00:00:00:00:02", ChangeKind::Settings);
        ASSERT_TRUE(id);
        changes.end(*id, {}, kNow);
    }
    const Record records = changes.records(kNow);
    EXPECT_EQ(records.size(), 64u);
    EXPECT_EQ(records.front()["stage"], "waiting");
    EXPECT_EQ(records.back()["id"], "201");
}

}  // namespace
