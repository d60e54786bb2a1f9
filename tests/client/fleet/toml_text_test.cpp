// TOML as values with their places, and texts that mean harm.
#include "client/fleet/toml_text.h"

#include <gmock/gmock.h>

#include "policy_text.h"

using namespace client;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(Toml, ValuesHaveTheirKindAndPlace) {
    using Kind = TomlValue::Kind;
    const Toml toml =
        parseToml("z = \"a\\tb\"\na = 8080\n\n[t]\n  b = true\n  \"c d\" = [1, {x = false}]\n  e = 1.5\n");
    ASSERT_THAT(toml.faults, IsEmpty());
    ASSERT_EQ(toml.root.entries.size(), 3u);
    EXPECT_EQ(toml.root.entries[0].key, "z");  // as they stand in the file
    EXPECT_EQ(toml.root.entries[0].value.text, "a\tb");
    EXPECT_EQ(toml.root.entries[0].value.place.column, 5u);
    EXPECT_EQ(toml.root.find("a")->value.text, "8080");
    EXPECT_EQ(toml.root.find("a")->value.kind, Kind::Number);
    const TomlValue& table = toml.root.find("t")->value;
    EXPECT_EQ(table.kind, Kind::Table);
    EXPECT_EQ(table.place.line, 4u);
    EXPECT_EQ(table.find("b")->value.text, "on");
    EXPECT_EQ(table.find("b")->place.line, 5u);
    EXPECT_EQ(table.find("b")->place.column, 3u);
    EXPECT_EQ(table.find("c d")->value.items[1].find("x")->value.text, "off");
    EXPECT_EQ(table.find("e")->value.kind, Kind::Other);
    EXPECT_EQ(table.find("f"), nullptr);
}

TEST(Toml, DottedKeysAndTablesAreTheSame) {
    for (const char* text :
         {"time.zone = \"x\"", "[time]\nzone = \"x\"", "time = { zone = \"x\" }", "\"time\" . zone = 'x'"}) {
        const Toml toml = parseToml(text);
        ASSERT_THAT(toml.faults, IsEmpty()) << text;
        EXPECT_EQ(toml.root.find("time")->value.find("zone")->value.text, "x");
    }
}

static std::string tomlFault(const std::string& text) {
    const auto words = wordsOf(parseToml(text).faults);
    return words.empty() ? "" : words.front();
}

TEST(Toml, SyntaxErrorsHaveAPlaceAndShowNothingThatStandsThere) {
    EXPECT_THAT(tomlFault("a = 1\nb = \"open\n"), HasSubstr("2:"));
    EXPECT_THAT(tomlFault("a = 1\na = 2\n"), HasSubstr("2:"));
    EXPECT_THAT(tomlFault("[defaults\n"), HasSubstr("is no TOML: "));
    EXPECT_THAT(tomlFault("a = trx\n"), HasSubstr("is no TOML: boolean: expected 'true'"));
    for (const char* value :
         {"MARKED", "trMARKED", "falsMARKED", "\"a\" MARKED", "123456MARKED", "1e5MARKED", "inMARKED", "0xMARKED",
          "1979-MARKED", "\"\\MARKED\"", "1e99999999", "[MARKED", "{MARKED", "'MARKED"}) {
        const std::string fault = tomlFault("[defaults]\npassword = " + std::string(value) + "\n");
        EXPECT_THAT(fault, testing::MatchesRegex("[23]:[0-9]+ is no TOML: .*")) << value;
        EXPECT_THAT(fault, Not(HasSubstr("saw"))) << value;
        EXPECT_THAT(fault, Not(testing::ContainsRegex("MARK|9999|'[^fti=]"))) << value;
    }
}

static std::string repeated(const std::string& text, size_t count) {
    std::string all;
    while (count-- > 0) all += text;
    return all;
}

TEST(Toml, DeepNestingIsRefused) {
    constexpr size_t kDeep = 100000;
    EXPECT_THAT(tomlFault("a = " + repeated("[", kDeep)), HasSubstr("nested value depth"));
    EXPECT_THAT(tomlFault("a = " + repeated("{a=", kDeep)), HasSubstr("nested value depth"));
    EXPECT_EQ(tomlFault("x=1\nab" + repeated(".a", kDeep) + " = 1"), "2:19 this key has too many parts");
    EXPECT_THAT(tomlFault("[a" + repeated(".a", kDeep) + "]"), HasSubstr("too many parts"));
    EXPECT_THAT(tomlFault("'a'" + repeated(".'a'", kDeep) + " = 1"), HasSubstr("too many parts"));
    EXPECT_THAT(tomlFault("# '\na" + repeated(" . \"\\\"\"", kDeep) + " = 1"), HasSubstr("too many parts"));
    EXPECT_THAT(tomlFault("b = '''\n''\n'''\na" + repeated(".a", kDeep) + " = 1"), HasSubstr("too many parts"));
    EXPECT_EQ(tomlFault("a = \"" + repeated(".", kDeep) + "\"\nb = '''" + repeated(".\n", 9) + "''' # " +
                        repeated(".", 9) + "\nc = \"\"\"\n.........\"\"\""),
              "");
}

TEST(Toml, TheDeepestThatIsTakenIsGivenBack) {
    constexpr size_t kDepth = 250;
    const Toml toml = parseToml("a = " + repeated("{a.a.a.a.a.a.a.a.a = ", kDepth) + "1" + repeated("}", kDepth));
    EXPECT_THAT(toml.faults, IsEmpty());
    EXPECT_EQ(toml.root.entries.size(), 1u);
}

TEST(Toml, WhatIsNoTextIsRefused) {
    EXPECT_THAT(tomlFault(std::string("a = 1\nb = \"x\0y\"\n", 16)), HasSubstr("2:"));
    EXPECT_THAT(tomlFault(std::string("\0\0\0\0", 4)), HasSubstr("1:"));
    EXPECT_THAT(tomlFault("a = 1\nb = \"caf\xE9\"\n"), HasSubstr("2:"));
    EXPECT_THAT(tomlFault("\xFF\xFE"
                          "a\0=\0"),
                HasSubstr("1:"));
    EXPECT_EQ(tomlFault("\xEF\xBB\xBF"
                        "a = 1\r\nb = \"\xC3\xA9\"\r\n"),
              "");
    EXPECT_EQ(tomlFault(repeated("# no end of it\n", 100000)),
              "1:0 is larger than 1 MiB; many cameras belong in a table beside the policy");
}
