// The names in any ini file, as linked lists.
#include <gtest/gtest.h>

#include "platform.h"
#include "support/temporary_folder.h"

using Names = std::vector<std::string>;

static Names taken(ListNode* list) {
    Names names;
    for (const ListNode* node = list; node != nullptr; node = node->next) names.push_back(node->name);
    ListFree(list);
    return names;
}

class IniList : public testing::Test {
protected:
    const char* file(const std::string& bytes) {
        writeFile(folder_ / "names.ini", bytes);
        path_ = (folder_ / "names.ini").string();
        return path_.c_str();
    }

private:
    TemporaryFolder folder_;
    std::string path_;
};

TEST_F(IniList, KeepsTheOrderOfTheFile) {
    const char* path = file("; regions\nstray=1\n[3]\n13=x\n1=\n\n# 5=y\n 36 = z\n[1]\n[ 10 ]\r\n11=a\r\nword\n0=0");
    EXPECT_EQ(taken(CfgEnumSec(path)), (Names{"3", "1", "10"}));
    EXPECT_EQ(taken(CfgEnumField(path, "3")), (Names{"13", "1", "36"}));
    EXPECT_EQ(taken(CfgEnumField(path, "10")), (Names{"11", "0"}));
    EXPECT_EQ(CfgEnumField(path, "1"), nullptr);
    EXPECT_EQ(CfgEnumField(path, "2"), nullptr);
    EXPECT_EQ(CfgEnumField(path, ""), nullptr);
}

TEST_F(IniList, NamesEverythingOnce) {
    const char* path = file("[a]\nx=1\ny=2\n[b]\nx=3\n[a]\nx=4\nz=5\n");
    EXPECT_EQ(taken(CfgEnumSec(path)), (Names{"a", "b"}));
    EXPECT_EQ(taken(CfgEnumField(path, "a")), (Names{"x", "y", "z"}));
}

TEST_F(IniList, IsNullWhereThereIsNothing) {
    for (const char* bytes : {"", "\n\n", "# only a comment\n", "x=1\n", "[\n", "="}) {
        EXPECT_EQ(CfgEnumSec(file(bytes)), nullptr) << bytes;
        EXPECT_EQ(CfgEnumField(file(bytes), "x"), nullptr) << bytes;
    }
    EXPECT_EQ(CfgEnumSec("/nowhere/names.ini"), nullptr);
    EXPECT_EQ(CfgEnumField("/nowhere/names.ini", "1"), nullptr);
    EXPECT_EQ(CfgEnumSec("/"), nullptr);
    EXPECT_EQ(CfgEnumSec(nullptr), nullptr);
    EXPECT_EQ(CfgEnumField(nullptr, "1"), nullptr);
    EXPECT_EQ(CfgEnumField(file("[1]\n1=1\n"), nullptr), nullptr);
    ListFree(nullptr);
}

TEST_F(IniList, CutsNamesAt255Bytes) {
    const std::string longest(255, 'n');
    const char* path = file("[" + longest + "]\n" + longest + "=1\n[" + longest + "more]\n" + "x" + longest + "=1\n");
    EXPECT_EQ(taken(CfgEnumSec(path)), Names{longest});
    EXPECT_EQ(taken(CfgEnumField(path, longest.c_str())), Names{longest});
    EXPECT_EQ(taken(CfgEnumField(path, (longest + "more").c_str())), Names{"x" + longest.substr(1)});
}

TEST_F(IniList, HasABoundOfSize) {
    const std::string head = "[1]\n1=1\n#";
    EXPECT_EQ(taken(CfgEnumSec(file(head + std::string(64 * 1024 - head.size(), 'x')))), Names{"1"});
    EXPECT_EQ(CfgEnumSec(file(head + std::string(64 * 1024 - head.size() + 1, 'x'))), nullptr);
}
