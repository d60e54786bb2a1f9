// Tables as spreadsheets save them.
#include "client/fleet/csv.h"

#include <gmock/gmock.h>

using namespace client;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::vector<std::string>>;

static Texts textsOf(const Csv& csv) {
    Texts rows;
    for (const CsvRow& row : csv.rows) {
        rows.emplace_back();
        for (const CsvCell& cell : row) rows.back().push_back(cell.text);
    }
    return rows;
}

TEST(Csv, TakesWhatSpreadsheetsSave) {
    const Texts wanted = {{"mac", "name"}, {"one", "Gate"}};
    for (const char* text : {"mac,name\none,Gate\n", "mac,name\r\none,Gate\r\n", "mac;name\none;Gate",
                             "mac,name\rone,Gate\r", "\xEF\xBB\xBFmac;name\r\none;Gate\r\n",
                             "\"mac\",\"name\"\n\"one\",\"Gate\"\n", "mac,name\n\n,\none,Gate\n,,\n"}) {
        EXPECT_EQ(textsOf(parseCsv(text)), wanted) << text;
        EXPECT_THAT(parseCsv(text).faults, IsEmpty()) << text;
    }
}

TEST(Csv, QuotesHoldAnything) {
    const Csv csv = parseCsv("mac;name\n\"a;b\";\"say \"\"hi\"\"\"\n\"two\r\nlines\";x\nlast;\"\"\n");
    EXPECT_EQ(textsOf(csv), (Texts{{"mac", "name"}, {"a;b", "say \"hi\""}, {"two\r\nlines", "x"}, {"last", ""}}));
    EXPECT_EQ(csv.rows[2][1].place.line, 4u);
    EXPECT_EQ(csv.rows[3][0].place.line, 5u);
    EXPECT_EQ(csv.rows[3][1].place.column, 2u);
}

TEST(Csv, TheOtherSeparatorIsText) {
    EXPECT_EQ(textsOf(parseCsv("a,b\n1;2,3")), (Texts{{"a", "b"}, {"1;2", "3"}}));
    EXPECT_EQ(textsOf(parseCsv("a;b\n1,2;3")), (Texts{{"a", "b"}, {"1,2", "3"}}));
    EXPECT_EQ(textsOf(parseCsv("\"a;b\",c\n1;2,3")), (Texts{{"a;b", "c"}, {"1;2", "3"}}));
}

static std::vector<std::string> faultsOf(const std::string& text) {
    std::vector<std::string> faults;
    for (const Fault& fault : parseCsv(text).faults) {
        faults.push_back(std::to_string(fault.place.line) + ":" + std::to_string(fault.place.column) + " " +
                         fault.text);
    }
    return faults;
}

TEST(Csv, FaultsAreFoundAtTheirPlace) {
    EXPECT_THAT(faultsOf("a,b\n1,\"open\n2,3\n"), ElementsAre("2:2 the quote that opens here is not closed"));
    EXPECT_THAT(faultsOf("a,b\n\"1\"x,2\n"), ElementsAre("2:1 something stands behind the closing quote"));
    EXPECT_THAT(faultsOf("a,b\n1,caf\xE9\n"), ElementsAre("2:2 is not UTF-8; have the spreadsheet save it as such"));
    EXPECT_THAT(faultsOf(std::string("a,b\n1,\0x\n", 9)),
                ElementsAre("2:2 holds a NUL byte: the file is no text in UTF-8"));
}

TEST(Csv, EveryCharacterOfUtf8) {
    for (const char* text : {"caf\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x93\xB7", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80",
                             "\xED\x9F\xBF", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_THAT(faultsOf(text), IsEmpty()) << testing::PrintToString(text);
    }
    for (const char* text : {"\x80", "\xC0\x80", "\xC1\x80", "\xF5\x80\x80\x80", "\xE0\x80\x80", "\xED\xA0\x80",
                             "\xF4\x90\x80\x80", "\xF8", "\xE2\x82"}) {
        EXPECT_EQ(faultsOf(text).size(), 1u) << testing::PrintToString(text);
    }
}
