#include <gtest/gtest.h>

#include "util/StringUtils.h"
#include "util/ThreadUtils.h"

namespace {

using namespace MORVEX::Kel;
using Strings = std::vector<std::string>;

TEST(StringUtils, SplitsAtTheFirstDelimiter) {
    const Strings kRows[] = {{"a=b=c", "a", "b=c"}, {"abc", "abc", ""}, {"=x", "", "x"}, {"x=", "x", ""}, {"", "", ""}};
    for (const Strings& row : kRows) {
        std::string source = row[0];
        std::string first = "old";
        std::string second = "old";
        splitString(source, '=', first, second);
        EXPECT_EQ((Strings{source, first, second}), row);
    }
    std::string both = "k=v";
    std::string value;
    splitString(both, '=', both, value);
    EXPECT_EQ(both + "|" + value, "k|v");
}

TEST(StringUtils, SplitsIntoAllFieldsBehindThoseThatAreThere) {
    const std::pair<std::string, Strings> kRows[] = {
        {"a,,b,", {"a", "", "b", ""}}, {"", {""}}, {"abc", {"abc"}}, {",", {"", ""}}, {std::string("a,b\0,c", 6), {"a", "b"}},
    };
    for (const auto& [text, expected] : kRows) {
        std::string source = text;
        Strings fields = {"old"};
        EXPECT_EQ(splitString(source, ',', fields), expected.size() + 1);
        EXPECT_EQ(Strings(fields.begin() + 1, fields.end()), expected);
        EXPECT_EQ(source, text);
    }
}

TEST(StringUtils, Joins) {
    const std::pair<Strings, const char*> kRows[] = {{{"a", "", "b"}, "a,,b"}, {{}, ""}, {{"x"}, "x"}, {{"", ""}, ","}};
    for (auto [elements, expected] : kRows) {
        std::string joined = "old";
        joinString(elements, ',', joined);
        EXPECT_EQ(joined, expected);
    }
}

TEST(StringUtils, Trims) {
    struct Row {
        std::string text, whiteSpace, space;
    };
    const Row kRows[] = {
        {"\t a \t\tb  ", "a b", "\t a \t\tb"},
        {"   ", "", ""},
        {"", "", ""},
        {"a\nb", "a\nb", "a\nb"},
        {"\t a ", "a", "\t a"},
        {"\n x", "\n x", "\n x"},
        {"  a  b  ", "a b", "a  b"},
        {"\t", "", "\t"},
    };
    for (const Row& row : kRows) {
        std::string one = row.text;
        std::string two = row.text;
        trimWhiteSpace(one);
        EXPECT_EQ(one, row.whiteSpace) << row.text;
        EXPECT_EQ(trimSpace(two), row.space) << row.text;
        EXPECT_EQ(two, row.space);
    }
}

TEST(StringUtils, LowersBytesAndLeavesTheRest) {
    std::string text = "AbC-\xC3\x84";
    EXPECT_EQ(&toLowerString(text), &text);
    EXPECT_EQ(text, "abc-\xC3\x84");
}

TEST(StringUtils, FormatsAnyLength) {
    EXPECT_EQ(strprintf("%s=%d%c", "8", 42, '|'), "8=42|");
    for (const size_t length : {0U, 1022U, 1023U, 1024U, 1025U, 100000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(strprintf("%s", text.c_str()), text);
    }
}

TEST(StringUtils, MatchesExtendedExpressionsAnywhere) {
    struct Row {
        std::string pattern, subject;
        bool matches;
    };
    for (Row row : {Row{"b+", "abbbc", true}, Row{"^b", "abc", false}, Row{"(", "(", false}, Row{"B", "b", false},
                    Row{"^(a|b)$", "b", true}, Row{"", "x", true}}) {
        EXPECT_EQ(regexMatch(row.pattern, row.subject), row.matches) << row.pattern;
    }
}

TEST(ThreadUtils, KnowsItsThreadAndSleeps) {
    EXPECT_EQ(pt::pthrequal(pt::pthrself()), 1);
    EXPECT_EQ(pt::pthrequal(pt::pthrself() + 1), 0);
    EXPECT_EQ(pt::psleep(1), 0);
}

}  // namespace
