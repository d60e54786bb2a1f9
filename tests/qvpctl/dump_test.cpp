#include "qvpctl/dump.h"

#include <gmock/gmock.h>

#include "client/error.h"

using testing::ElementsAre;
using testing::HasSubstr;

static const std::vector<uint8_t> kReply = {0xEE, 0xFE, 0x34, 0x12, 0xA8, 0x00, 0x02, 0, 0x5E, 0x10, 0,     0xAF,
                                            192,  0,    2,    10,   3,    0,    2,    0, 1,    0,    '\x1b'};

TEST(Dump, ShowsBytesAndFields) {
    EXPECT_EQ(dumpText(kReply),
              "  0000  ee fe 34 12 a8 00 02 00 5e 10 00 af c0 00 02 0a ..4.....^.......\n"
              "  0010  03 00 02 00 01 00 1b                            .......\n"
              "  kind          reply\n"
              "  sequence      4660\n"
              "  opcode        0x00A8\n"
              "  command       get wireless settings\n"
              "  mac           02:00:5e:10:00:af\n"
              "  address       192.0.2.10\n"
              "  status        3\n"
              "  statusText    wrong user name or password\n"
              "  family        primary\n"
              "  payloadLength 1\n");
}

TEST(Dump, NamesEveryKindStatusAndFamily) {
    std::vector<uint8_t> bytes = kReply;
    const auto field = [&](size_t offset, uint8_t value, const char* key) {
        bytes[offset] = value;
        return dumpRecord(bytes)["header"][key].dump();
    };
    EXPECT_EQ(field(16, 0, "statusText"), R"("done")");
    EXPECT_EQ(field(16, 2, "statusText"), R"("refused")");
    EXPECT_EQ(field(16, 9, "statusText"), R"("unknown")");
    EXPECT_EQ(field(18, 1, "family"), R"("landap")");
    EXPECT_EQ(field(18, 7, "family"), "null");
    EXPECT_EQ(field(4, 0xFF, "command"), R"("")");
    EXPECT_EQ(field(0, 0, "kind"), R"("unknown")");
    bytes[0] = bytes[1] = 0xFF;
    EXPECT_EQ(field(4, 0xA0, "kind"), R"("presence report")");
    bytes[0] = bytes[1] = 0xFD;
    EXPECT_EQ(field(16, 0, "statusText"), R"("by MAC or broadcast")");
    bytes[17] = 0x77;
    EXPECT_EQ(field(16, 0x77, "statusText"), R"("by MAC")");
}

TEST(Dump, OfWhatIsTooShortHasNoHeader) {
    const std::vector<uint8_t> shortOne(kReply.begin(), kReply.begin() + 21);
    EXPECT_THAT(dumpText(shortOne), HasSubstr("\n  too short for a header\n"));
    EXPECT_EQ(dumpRecord({shortOne.data(), 2}).dump(), R"({"length":2,"header":null,"hex":"eefe"})");
    EXPECT_EQ(dumpText({}), "  too short for a header\n");
}

TEST(ParseHex, TakesPairsOfDigits) {
    EXPECT_THAT(parseHex("fdFD 00:1a\n"), ElementsAre(0xFD, 0xFD, 0x00, 0x1A));
    EXPECT_THAT(parseHex(""), testing::IsEmpty());
    for (const char* const text : {"f", "fd f", "f d", "0x00", "gg", "fd-fd"}) {
        EXPECT_THROW(parseHex(text), client::Error) << text;
    }
}
