// Texts of a request that may run past their field.
#include "support/packet.h"
#include "util/packet.h"

namespace unit {
namespace {

std::string taken(const Bytes& datagram, std::size_t from) {
    char text[256];
    memset(text, 0x55, sizeof text);
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
