// Pieces of a text beside whole ones.
#include "common/slice.h"

#include <gtest/gtest.h>

TEST(ASlice, EqualsTheTextThatHasItsBytesAndNoOther) {
    EXPECT_TRUE(sliceEquals({"INFO]", 4}, "INFO"));
    EXPECT_TRUE(sliceEquals({"", 0}, ""));
    EXPECT_FALSE(sliceEquals({"INFO]", 5}, "INFO"));
    EXPECT_FALSE(sliceEquals({"INFO]", 3}, "INFO"));
    EXPECT_FALSE(sliceEquals({"INFO]", 4}, "info"));
}

// Behind the text's end there may be anything: here are NUL bytes.
TEST(ASlice, WithANulEqualsNoText) {
    static const char text[8] = "INFO";
    EXPECT_FALSE(sliceEquals({"INFO\0", 5}, text));
    EXPECT_FALSE(sliceEquals({"INFO\0b", 6}, text));
    EXPECT_FALSE(sliceEquals({"\0", 1}, ""));
}
