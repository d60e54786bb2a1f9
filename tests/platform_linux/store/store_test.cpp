// The configuration store as a file that people and other programs edit too.
#include <cstring>

#include "store/store_fixture.h"

using MaybeText = std::optional<std::string>;
using std::string_literals::operator""s;

struct ReadRow {
    const char* what;
    std::string file;
    MaybeText name;  // CAMSYSTEM / CameraName
};

void PrintTo(const ReadRow& row, std::ostream* out) { *out << row.what; }

class StoreReads : public StoreTest, public testing::WithParamInterface<ReadRow> {};

TEST_P(StoreReads, CameraName) {
    put(GetParam().file);
    EXPECT_EQ(storedText("CAMSYSTEM", "CameraName"), GetParam().name) << GetParam().what;
}

static const std::string kLongest(255, 'a');

static const ReadRow kReadRows[] = {
    {"plain", "[CAMSYSTEM]\nCameraName=Front door\n", "Front door"},
    {"empty file", "", {}},
    {"no such section", "[INFO]\nCameraName=a\n", {}},
    {"no such key", "[CAMSYSTEM]\nCameraNames=a\nCameraNam=b\n", {}},
    {"other case", "[CAMSYSTEM]\ncameraname=a\n[camsystem]\nCameraName=b\n", {}},
    {"before any section", "CameraName=a\n[CAMSYSTEM]\n", {}},
    {"empty value", "[CAMSYSTEM]\nCameraName=\n", ""},
    {"blanks around everything", " [ CAMSYSTEM ] \n\t CameraName \t = \t a b \t \n", "a b"},
    {"further equals signs", "[CAMSYSTEM]\nCameraName=a=b==\n", "a=b=="},
    {"a value that looks like a section", "[CAMSYSTEM]\nCameraName=[INFO]\n", "[INFO]"},
    {"comment signs inside", "[CAMSYSTEM]\nCameraName=a # b ; c\n", "a # b ; c"},
    {"commented out", "[CAMSYSTEM]\n#CameraName=a\n ;CameraName=b\n", {}},
    {"a section commented out", "#[CAMSYSTEM]\nCameraName=a\n", {}},
    {"comment behind the section", "[CAMSYSTEM] # the camera\nCameraName=a\n", "a"},
    {"section without its end", "[CAMSYSTEM\nCameraName=a\n", {}},
    {"line without equals sign", "[CAMSYSTEM]\nCameraName\nCameraName=a\n", "a"},
    {"first of two counts", "[CAMSYSTEM]\nCameraName=a\nCameraName=b\n", "a"},
    {"first of two counts, malformed too", "[CAMSYSTEM]\nCameraName=\"a\nCameraName=b\n", {}},
    {"section in two pieces", "[CAMSYSTEM]\nX=1\n[INFO]\nY=2\n[CAMSYSTEM]\nCameraName=a\n", "a"},
    {"no newline at the end", "[CAMSYSTEM]\nCameraName=a", "a"},
    {"CRLF", "[CAMSYSTEM]\r\nCameraName=a\r\n", "a"},
    {"CRLF, quoted", "[CAMSYSTEM]\r\nCameraName=\"a \"\r\n", "a "},
    {"byte-order mark", "\xEF\xBB\xBF[CAMSYSTEM]\nCameraName=a\n", "a"},
    {"UTF-8", "[CAMSYSTEM]\nCameraName=T\xC3\xBCr\n", "T\xC3\xBCr"},
    {"tab inside a plain value", "[CAMSYSTEM]\nCameraName=a\tb\n", "a\tb"},
    {"quotes inside a plain value", "[CAMSYSTEM]\nCameraName=a\"b\"\n", "a\"b\""},
    {"backslash inside a plain value", "[CAMSYSTEM]\nCameraName=a\\n\n", "a\\n"},
    {"quoted", "[CAMSYSTEM]\nCameraName=\" a \"\n", " a "},
    {"quoted, empty", "[CAMSYSTEM]\nCameraName=\"\"\n", ""},
    {"every escape", "[CAMSYSTEM]\nCameraName=\"\\\\\\\"\\n\\r\\t\\x41\\xfF\"\n", "\\\"\n\r\tA\xFF"},
    {"quote not ended", "[CAMSYSTEM]\nCameraName=\"a\n", {}},
    {"a lone quote", "[CAMSYSTEM]\nCameraName=\"\n", {}},
    {"quote ended too early", "[CAMSYSTEM]\nCameraName=\"a\"b\"\n", {}},
    {"text behind the quote", "[CAMSYSTEM]\nCameraName=\"a\" b\n", {}},
    {"end quote escaped", "[CAMSYSTEM]\nCameraName=\"a\\\"\n", {}},
    {"unknown escape", "[CAMSYSTEM]\nCameraName=\"\\a\"\n", {}},
    {"half a hexadecimal escape", "[CAMSYSTEM]\nCameraName=\"\\x4\"\n", {}},
    {"bad hexadecimal escape", "[CAMSYSTEM]\nCameraName=\"\\x4g\"\n", {}},
    {"escaped NUL", "[CAMSYSTEM]\nCameraName=\"\\x00\"\n", {}},
    {"NUL", "[CAMSYSTEM]\nCameraName=a\0b\n"s, {}},
    {"NUL in another line", "[CAMSYSTEM]\nX=\0\nCameraName=a\n"s, "a"},
    {"255 bytes", "[CAMSYSTEM]\nCameraName=" + kLongest + "\n", kLongest},
    {"256 bytes are cut", "[CAMSYSTEM]\nCameraName=" + kLongest + "b\n", kLongest},
    {"256 quoted bytes are cut", "[CAMSYSTEM]\nCameraName=\"" + kLongest + "\\n\"\n", kLongest},
};

INSTANTIATE_TEST_SUITE_P(Format, StoreReads, testing::ValuesIn(kReadRows));

struct WriteRow {
    const char* what;
    std::string before, after;  // the file, when CAMSYSTEM / CameraName becomes "new"
};

void PrintTo(const WriteRow& row, std::ostream* out) { *out << row.what; }

class StoreWrites : public StoreTest, public testing::WithParamInterface<WriteRow> {};

TEST_P(StoreWrites, CameraNameAndNothingElse) {
    put(GetParam().before);
    ASSERT_EQ(writeText("CAMSYSTEM", "CameraName", "new"), 0) << GetParam().what;
    EXPECT_EQ(bytes(), GetParam().after) << GetParam().what;
    EXPECT_EQ(storedText("CAMSYSTEM", "CameraName"), "new") << GetParam().what;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"camera.ini"});
}

static const WriteRow kWriteRows[] = {
    {"replaced", "[CAMSYSTEM]\nCameraName=old\n", "[CAMSYSTEM]\nCameraName=new\n"},
    {"empty value", "[CAMSYSTEM]\nCameraName=\nX=1\n", "[CAMSYSTEM]\nCameraName=new\nX=1\n"},
    {"quoted value", "[CAMSYSTEM]\nCameraName=\"o\\n\"\n", "[CAMSYSTEM]\nCameraName=new\n"},
    {"malformed value", "[CAMSYSTEM]\nCameraName=\"o\n", "[CAMSYSTEM]\nCameraName=new\n"},
    {"comments, order and blanks stay",
     "# factory\n\n; x\n[INFO]\nProduct = P \n\n [ CAMSYSTEM ] # cam\n# name\n\tCameraName =  old \t\n\n;end\n",
     "# factory\n\n; x\n[INFO]\nProduct = P \n\n [ CAMSYSTEM ] # cam\n# name\n\tCameraName =  new \t\n\n;end\n"},
    {"unknown lines stay", "?\n[\n=\n=x\n[CAMSYSTEM]\nfree text\nCameraName=old\nZ=9",  //
     "?\n[\n=\n=x\n[CAMSYSTEM]\nfree text\nCameraName=new\nZ=9"},
    {"first of two", "[CAMSYSTEM]\nCameraName=a\nCameraName=b\n", "[CAMSYSTEM]\nCameraName=new\nCameraName=b\n"},
    {"same key of other sections", "[A]\nCameraName=a\n[CAMSYSTEM]\nCameraName=b\n[B]\nCameraName=c\n",
     "[A]\nCameraName=a\n[CAMSYSTEM]\nCameraName=new\n[B]\nCameraName=c\n"},
    {"in the section's second piece", "[CAMSYSTEM]\nX=1\n[A]\n[CAMSYSTEM]\nCameraName=b\n",
     "[CAMSYSTEM]\nX=1\n[A]\n[CAMSYSTEM]\nCameraName=new\n"},
    {"new key, behind the last one of its section", "[CAMSYSTEM]\nX=1\n# more\nY=2\n# tail\n\n# next\n[A]\nB=1\n",
     "[CAMSYSTEM]\nX=1\n# more\nY=2\nCameraName=new\n# tail\n\n# next\n[A]\nB=1\n"},
    {"new key in a section without keys", "[CAMSYSTEM]\n\n[A]\n", "[CAMSYSTEM]\nCameraName=new\n\n[A]\n"},
    {"new key in the first of two pieces", "[CAMSYSTEM]\nX=1\n[A]\nB=1\n[CAMSYSTEM]\nY=1\n",
     "[CAMSYSTEM]\nX=1\nCameraName=new\n[A]\nB=1\n[CAMSYSTEM]\nY=1\n"},
    {"new key, no newline at the end", "[CAMSYSTEM]\nX=1", "[CAMSYSTEM]\nX=1\nCameraName=new\n"},
    {"new key behind a heading without newline", "[A]\n[CAMSYSTEM]", "[A]\n[CAMSYSTEM]\nCameraName=new\n"},
    {"replaced, no newline at the end", "[CAMSYSTEM]\nCameraName=old", "[CAMSYSTEM]\nCameraName=new"},
    {"new section", "[A]\nB=1\n# end\n", "[A]\nB=1\n# end\n\n[CAMSYSTEM]\nCameraName=new\n"},
    {"new section, no newline at the end", "[A]\nB=1", "[A]\nB=1\n\n[CAMSYSTEM]\nCameraName=new\n"},
    {"new section in an empty file", "", "[CAMSYSTEM]\nCameraName=new\n"},
    {"CRLF, replaced", "[CAMSYSTEM]\r\nCameraName=old\r\nX=1\r\n", "[CAMSYSTEM]\r\nCameraName=new\r\nX=1\r\n"},
    {"CRLF, new key", "[CAMSYSTEM]\r\nX=1\r\n\r\n[A]\r\n", "[CAMSYSTEM]\r\nX=1\r\nCameraName=new\r\n\r\n[A]\r\n"},
    {"CRLF, new section", "[A]\r\nB=1", "[A]\r\nB=1\r\n\r\n[CAMSYSTEM]\r\nCameraName=new\r\n"},
    {"CRLF, new key, half a line break at the end", "[A]\r\n[CAMSYSTEM]\r\nX=1\r",
     "[A]\r\n[CAMSYSTEM]\r\nX=1\r\nCameraName=new\r\n"},
    {"a section's name in front of a NUL", "[CAMSYSTEM\0a name with a NUL]\nX=1\n"s,
     "[CAMSYSTEM\0a name with a NUL]\nX=1\n\n[CAMSYSTEM]\nCameraName=new\n"s},
    {"byte-order mark", "\xEF\xBB\xBF[CAMSYSTEM]\nCameraName=old\n", "\xEF\xBB\xBF[CAMSYSTEM]\nCameraName=new\n"},
    {"NUL bytes elsewhere", "\0\n[A]\nB=\0\n[CAMSYSTEM]\nCameraName=a\0b\n"s,
     "\0\n[A]\nB=\0\n[CAMSYSTEM]\nCameraName=new\n"s},
};

INSTANTIATE_TEST_SUITE_P(Format, StoreWrites, testing::ValuesIn(kWriteRows));

TEST_F(StoreTest, IsMadeByTheFirstWrite) {
    EXPECT_EQ(storedText("INFO", "Product"), std::nullopt);
    EXPECT_EQ(writeText("INFO", "Product", "IP camera"), 0);
    EXPECT_EQ(bytes(), "[INFO]\nProduct=IP camera\n");
}

TEST_F(StoreTest, ShowsAnEditByOthersToTheNextRead) {
    put("[INFO]\nProduct=a\n");
    EXPECT_EQ(storedText("INFO", "Product"), "a");
    put("[INFO]\nProduct=b\n");
    EXPECT_EQ(storedText("INFO", "Product"), "b");
}

TEST_F(StoreTest, KnowsNoOtherKeys) {
    const std::string file = "[WIRELESS]\nWEPKey7=a\n[Own]\nKey=b\n[INFO]\nProduct=c\n";
    put(file);
    const struct {
        const char *section, *key;
    } rows[] = {
        {"WIRELESS", "WEPKey7"}, {"Own", "Key"},     {"", ""},           {"INFO", ""},         {"", "Product"},
        {"INFO", "Product1"},    {"INFO", "Produc"}, {"INF", "Product"}, {"INFO1", "Product"}, {"info", "Product"},
        {nullptr, "Product"},    {"INFO", nullptr},  {nullptr, nullptr}, {"AAA", "AAA"},       {"zzz", "zzz"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(storedText(row.section, row.key), std::nullopt);
        EXPECT_EQ(writeText(row.section, row.key, "new"), -1);
        EXPECT_EQ(bytes(), file);
    }
    EXPECT_EQ(cfgRead("INFO", "Product", nullptr), -1);
    EXPECT_EQ(cfgWrite("INFO", "Product", nullptr, 1), -1);
    EXPECT_EQ(bytes(), file);
}

TEST_F(StoreTest, AnswersMissingWithoutAFileThatCanBeRead) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const std::filesystem::path& store : {folder / ".", folder / "none/camera.ini", folder / "pipe"}) {
        setenv("QVP_STORE", store.c_str(), 1);
        EXPECT_EQ(storedText("INFO", "Product"), std::nullopt) << store;
        EXPECT_EQ(writeText("INFO", "Product", "a"), -1) << store;
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"pipe"});
}
