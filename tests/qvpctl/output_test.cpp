#include "qvpctl/output.h"

#include <gtest/gtest.h>

#include <sstream>

#include "client/error.h"
#include "qvpctl/exit_code.h"
#include "qvpctl/terminal_text.h"

static const Column kColumns[] = {
    {"NAME", "name", 6},
    {"ADDRESS", "address", 9},
    {"WEB", "url", 0},
};

class OutputTest : public testing::Test {
protected:
    static void SetUpTestSuite() { useUtf8(); }

    static Record record(const std::string& name, const std::string& address) {
        return {{"address", address}, {"name", name}, {"url", nullptr}, {"hidden", 1}};
    }

    std::ostringstream stream_;
};

TEST_F(OutputTest, TableIsAsWideAsItMustBe) {
    const auto output = table(stream_, kColumns, Looks::No);
    output->add(record("T\xc3\xbcr", "9.255.0.1"));
    output->add(record("", "10.0.0.9"));
    output->add(record("Gate", "10.0.0.10"));
    EXPECT_EQ(stream_.str(), "");
    output->finish();
    EXPECT_EQ(stream_.str(),
              "NAME  ADDRESS    WEB\n"
              "T\xc3\xbcr   9.255.0.1  -\n"
              "-     10.0.0.9   -\n"
              "Gate  10.0.0.10  -\n");
}

TEST_F(OutputTest, TableWithoutRowsIsNothing) {
    table(stream_, kColumns, Looks::No)->finish();
    EXPECT_EQ(stream_.str(), "");
}

TEST_F(OutputTest, RecordsAreSortedNaturally) {
    const char* const addresses[] = {"0.0.0.0",    "1.0.0.0",        "9.9.9.9",   "10.0.0.0",   "10.0.0.1",
                                     "10.0.0.2",   "10.0.0.10",      "10.0.2.1",  "10.0.10.1",  "10.2.0.1",
                                     "10.10.0.1",  "100.0.0.1",      "192.0.2.9", "192.0.2.99", "192.0.2.100",
                                     "192.0.20.1", "255.255.255.255"};
    std::vector<Record> records;
    for (size_t i = std::size(addresses); i-- > 0;) records.push_back(record("", addresses[i]));
    sortBy(records, "address");
    for (size_t i = 0; i < std::size(addresses); i++) EXPECT_EQ(records[i]["address"], addresses[i]);
}

TEST_F(OutputTest, RecordsWithoutAValueComeLast) {
    std::vector<Record> records = {
        {{"n", nullptr}, {"i", 0}}, {{"n", 10}, {"i", 1}}, {{"n", ""}, {"i", 2}}, {{"n", 9}, {"i", 3}}};
    sortBy(records, "n");
    EXPECT_EQ(Record(records).dump(), R"([{"n":9,"i":3},{"n":10,"i":1},{"n":null,"i":0},{"n":"","i":2}])");
}

TEST_F(OutputTest, LooksTakeNoPlace) {
    const Column columns[] = {{"WEB", "url", 0, Look::Link}, {"NOTE", "note", 0, Look::Warning}, {"NAME", "name", 0}};
    const auto output = table(stream_, columns, Looks::Yes);
    output->add({{"url", "http://a/"}, {"note", "odd"}, {"name", "Gate"}});
    output->add({{"url", nullptr}, {"note", ""}, {"name", "x"}});
    output->finish();
    EXPECT_EQ(stream_.str(),
              "\033[1mWEB\033[0m        \033[1mNOTE\033[0m  \033[1mNAME\033[0m\n"
              "\033]8;;http://a/\033\\http://a/\033]8;;\033\\  \033[33modd\033[0m   Gate\n"
              "-          -     x\n");
}

TEST_F(OutputTest, LiveTablePrintsEachRowAtOnce) {
    const auto output = liveTable(stream_, kColumns, Looks::No);
    EXPECT_EQ(stream_.str(), "NAME    ADDRESS    WEB\n");
    output->add(record("Gate", "10.0.0.10"));
    output->add(record("Longer than its column", "10.0.0.9"));
    EXPECT_EQ(stream_.str(),
              "NAME    ADDRESS    WEB\n"
              "Gate    10.0.0.10  -\n"
              "Longer than its column  10.0.0.9   -\n");
}

TEST_F(OutputTest, TextOutputsEscapeWhatATerminalWouldObey) {
    const auto output = table(stream_, kColumns, Looks::No);
    output->add(record("\x1b]0;x\x07", "10.0.0.1"));
    output->finish();
    EXPECT_EQ(stream_.str(),
              "NAME          ADDRESS   WEB\n"
              "\\x1B]0;x\\x07  10.0.0.1  -\n");
}

TEST_F(OutputTest, JoinedEmojiKeepTheTableStraight) {
    const auto output = table(stream_, kColumns, Looks::No);
    output->add(record("\U0001F468\u200D\U0001F469", "10.0.0.1"));
    output->add(record("a  b", "10.0.0.2"));
    output->finish();
    EXPECT_EQ(stream_.str(),
              "NAME          ADDRESS   WEB\n"
              "\U0001F468\\u{200D}\U0001F469  10.0.0.1  -\n"
              "a \\x20b       10.0.0.2  -\n");
}

TEST_F(OutputTest, TableKeepsTheOrderOfItsRows) {
    const auto output = table(stream_, std::span(kColumns).first(1), Looks::No);
    output->add(record("b", ""));
    output->add(record("a", ""));
    output->finish();
    EXPECT_EQ(stream_.str(), "NAME\nb\na\n");
}

TEST_F(OutputTest, TableWithoutHeadingsBeginsWithItsRows) {
    const Column columns[] = {{"", "name", 0}, {"", "address", 0}};
    const auto output = table(stream_, columns, Looks::No);
    output->add(record("a", "10.0.0.1"));
    output->finish();
    EXPECT_EQ(stream_.str(), "a  10.0.0.1\n");
}

TEST_F(OutputTest, CsvHasALineARecordAtOnce) {
    const auto output = csv(stream_, kColumns);
    EXPECT_EQ(stream_.str(), "name,address,url\r\n");
    output->add(record("Gate", "10.0.0.10"));
    EXPECT_EQ(stream_.str(), "name,address,url\r\nGate,10.0.0.10,\r\n");
}

TEST_F(OutputTest, CsvQuotesAndDisarms) {
    const std::pair<std::string, std::string> rows[] = {
        {"a,b", "\"a,b\""},
        {"a;b", "\"a;b\""},
        {"a\"b", "\"a\"\"b\""},
        {"a\r\nb", "a\\x0D\\x0Ab"},
        {"\x1b[2J", "\\x1B[2J"},
        {"T\xc3\xbcr", "T\xc3\xbcr"},
        {"\xff", "\\xFF"},
        {"=1+1", "'=1+1"},
        {"+1", "'+1"},
        {"-1", "'-1"},
        {"@SUM(A1)", "'@SUM(A1)"},
        {"=\"a\"", "\"'=\"\"a\"\"\""},
        {"1-1", "1-1"},
        {"  a", "  a"},
    };
    for (const auto& [text, cell] : rows) {
        std::ostringstream stream;
        csv(stream, kColumns)->add(record(text, "10.0.0.1"));
        EXPECT_EQ(stream.str(), "name,address,url\r\n" + cell + ",10.0.0.1,\r\n");
    }
}

TEST_F(OutputTest, CsvLeavesNumbersAlone) {
    const Column columns[] = {{"N", "n", 0}};
    csv(stream_, columns)->add({{"n", -1}});
    EXPECT_EQ(stream_.str(), "n\r\n-1\r\n");
}

TEST_F(OutputTest, PlainValuesStandAlone) {
    const auto output = plainValues(stream_, "v");
    output->add({{"v", "Front  door\x1b"}});
    output->add({{"v", nullptr}});
    output->add({{"v", 7}});
    output->add({{"v", ""}});
    output->finish();
    EXPECT_EQ(stream_.str(), "Front  door\\x1B\n7\n\n");
}

TEST_F(OutputTest, JsonIsOneAsciiObjectALine) {
    const auto output = jsonLines(stream_);
    output->add({{"b", "T\xc3\xbcr \"\\\n\x1b\x7f\xc2\x9b"}, {"a", "\xff\xc3"}});
    output->add({{"a", 1}});
    EXPECT_EQ(stream_.str(),
              "{\"b\":\"T\\u00fcr \\\"\\\\\\n\\u001b\\u007f\\u009b\",\"a\":\"\\ufffd\\ufffd\"}\n"
              "{\"a\":1}\n");
}

TEST_F(OutputTest, ThatCannotBeWrittenIsASystemError) {
    stream_.setstate(std::ios::badbit);
    try {
        jsonLines(stream_)->add({{"a", 1}});
        FAIL();
    } catch (const client::Error& error) {
        EXPECT_EQ(exitCodeOf(error.kind()), 3);
    }
}
