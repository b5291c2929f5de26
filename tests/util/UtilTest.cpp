#include <gtest/gtest.h>

#include "util/StringUtils.h"
#include "util/ThreadUtils.h"

namespace {

using namespace MORVEX::Kel;
using Strings = std::vector<std::string>;

TEST(StringUtils, SplitsAtTheFirstDelimiter) {
    const Strings kRows[] = {{"a=b=c", "a", "b=c"}, {"abc", "abc", ""}, {"=x", "", "x"}, {"x=", "x", ""}, {"", "", ""}};
    for (const Strings& row : kRows) {
        std::string source = row[0], first = "old", second = "old";
        splitString(source, '=', first, second);
        EXPECT_EQ((Strings{source, first, second}), row);
    }
    std::string both = "k=v", value;
    splitString(both, '=', both, value);
    EXPECT_EQ(both + "|" + value, "k|v");
}

TEST(StringUtils, SplitsIntoAllFieldsBehindThoseThatAreThereAndJoins) {
    const std::pair<std::string, Strings> kRows[] = {{"a,,b,", {"a", "", "b", ""}}, {"", {""}}, {"abc", {"abc"}}, {",", {"", ""}}};
    for (const auto& [text, expected] : kRows) {
        std::string source = text, joined = "old";
        Strings fields = {"old"};
        EXPECT_EQ(splitString(source, ',', fields), expected.size() + 1);
        fields.erase(fields.begin());
        EXPECT_EQ(fields, expected);
        joinString(fields, ',', joined);
        EXPECT_TRUE(source == text && joined == text) << joined;
    }
    std::string joined = "old", cut("a,b\0,c", 6);
    Strings fields;
    joinString(fields, ',', joined);
    EXPECT_EQ(joined, "");
    EXPECT_EQ(splitString(cut, ',', fields), 2U);  // up to the NUL
    EXPECT_EQ(fields, (Strings{"a", "b"}));
}

TEST(StringUtils, Trims) {
    const Strings kRows[] = {
        {"\t a \t\tb  ", "a b", "\t a \t\tb"}, {"   ", "", ""}, {"", "", ""}, {"a\nb", "a\nb", "a\nb"}, {"\n x", "\n x", "\n x"},
        {"  a  b  ", "a b", "a  b"},           {"\t", "", "\t"}};
    for (const Strings& row : kRows) {
        std::string one = row[0], two = row[0];
        trimWhiteSpace(one);
        EXPECT_EQ((Strings{one, trimSpace(two), two}), (Strings{row[1], row[2], row[2]})) << row[0];
    }
}

TEST(StringUtils, LowersBytesAndLeavesTheRest) {
    std::string text = "AbC-\xC3\x84";
    EXPECT_EQ(&toLowerString(text), &text);
    EXPECT_EQ(text, "abc-\xC3\x84");
}

TEST(StringUtils, FormatsAnyLength) {
    for (const size_t length : {0U, 1018U, 1019U, 1020U, 1021U, 100000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(strprintf("%s=%d%c", text.c_str(), 42, '|'), text + "=42|");
    }
}

TEST(StringUtils, MatchesExtendedExpressionsAnywhere) {
    const std::tuple<std::string, std::string, bool> kRows[] = {{"b+", "abbbc", true}, {"^b", "abc", false},   {"(", "(", false},
                                                                {"B", "b", false},     {"^(a|b)$", "b", true}, {"", "x", true},
                                                                {"^b", "a\nb", false}};
    for (auto [pattern, subject, matches] : kRows) EXPECT_EQ(regexMatch(pattern, subject), matches) << pattern;
}

TEST(ThreadUtils, KnowsItsThread) {
    EXPECT_EQ(pt::pthrequal(pt::pthrself()), 1);
    EXPECT_EQ(pt::pthrequal(pt::pthrself() + 1), 0);
}

}  // namespace
