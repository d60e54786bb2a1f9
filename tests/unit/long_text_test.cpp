// Texts of a request: those that end with their field, and those that may run past it.
#include <algorithm>
#include <cstring>
#include <utility>

#include "support/packet.h"
#include "util/packet.h"

namespace unit {
namespace {

TEST(ShortText, EndsAtItsNulOrItsFieldsEnd) {
    const std::pair<std::string, std::string> rows[] = {
        {std::string("abcdefgh"), "abcdefgh"},   {std::string("abcdefg\0", 8), "abcdefg"},
        {std::string("ab\0cdefg", 8), "ab"},     {std::string("\0bcdefgh", 8), ""},
        {std::string("a\0\0\0\0\0\0h", 8), "a"},
    };
    for (const auto& [field, expected] : rows) {
        std::uint8_t given[8];
        std::memcpy(given, field.data(), sizeof given);
        char text[12];
        std::memset(text, 0x55, sizeof text);
        takeText(text, given);
        EXPECT_EQ(std::string(text, sizeof text), expected + std::string(sizeof text - expected.size(), '\0'));
    }
}

std::string taken(const Bytes& datagram, std::size_t from) {
    char text[256];
    std::memset(text, 0x55, sizeof text);
    takeLongText(text, datagram.data(), datagram.data() + from);
    const std::string ended(text);
    EXPECT_EQ(std::string(text + ended.size(), sizeof text - ended.size()),
              std::string(sizeof text - ended.size(), '\0'));
    return ended;
}

TEST(LongText, EndsAtItsNulAt255BytesOrAtTheDatagramsEnd) {
    const Bytes full(1024 + 255, 'x');  // more behind the datagram, which no text may reach
    for (const std::size_t from : {0, 22, 150, 767, 768, 769, 770, 900, 1022, 1023}) {
        SCOPED_TRACE(from);
        const std::size_t most = std::min<std::size_t>(255, 1024 - from);
        EXPECT_EQ(taken(full, from), std::string(most, 'x'));
        for (const std::size_t length : {std::size_t{0}, std::size_t{1}, most - 1}) {
            if (length >= most) continue;
            Bytes ended = full;
            ended[from + length] = 0;
            EXPECT_EQ(taken(ended, from), std::string(length, 'x'));
        }
    }
}

}  // namespace
}  // namespace unit
