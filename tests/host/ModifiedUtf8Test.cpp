#include "host/values/ModifiedUtf8.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using Pair = std::pair<std::string, std::string>;

const std::string kFace = "\xF0\x9F\x98\x80";  // U+1F600
const std::string kHigh = "\xED\xA0\xBD";      // its surrogates
const std::string kLow = "\xED\xB8\x80";
const std::string kUnknown = "\xEF\xBF\xBD";  // U+FFFD

TEST(ModifiedUtf8, GoesBothWays) {
    const Pair rows[] = {
        {"", ""},
        {"\xC3\xA4\xE2\x82\xAC\xEF\xBF\xBF", "\xC3\xA4\xE2\x82\xAC\xEF\xBF\xBF"},
        {"a\0b"s, "a\xC0\x80"s + "b"},
        {"<" + kFace + ">", "<" + kHigh + kLow + ">"},
        {"\xF0\x90\x80\x80", "\xED\xA0\x80\xED\xB0\x80"},  // U+10000
        {"\xF4\x8F\xBF\xBF", "\xED\xAF\xBF\xED\xBF\xBF"},  // U+10FFFF
    };
    for (const auto& [utf8, modified] : rows) {
        std::string out = ">";
        EXPECT_TRUE(host::appendModifiedUtf8(utf8, out));
        EXPECT_EQ(out, ">" + modified);
        EXPECT_EQ(host::toUtf8(modified), utf8);
    }
}

TEST(ModifiedUtf8, MalformedIsRefusedOnTheWayInAndReplacedOnTheWayOut) {
    const std::pair<std::string, size_t> refused[] = {{"ab\xFF", 2},
                                                      {"\x80", 0},
                                                      {"a\xC3", 1},
                                                      {"\xE2\x82", 0},
                                                      {"\xC3z", 0},
                                                      {"\xC0\x80", 0},
                                                      {"\xC1\xBF", 0},
                                                      {"\xE0\x9F\xBF", 0},
                                                      {"\xF0\x8F\xBF\xBF", 0},
                                                      {kHigh + kLow, 0},
                                                      {"x\xF4\x90\x80\x80", 1},
                                                      {"\xF8\x88\x80\x80\x80", 0}};
    for (const auto& [utf8, expected] : refused) {
        std::string out = ">";
        size_t position = 99;
        EXPECT_FALSE(host::appendModifiedUtf8(utf8, out, &position)) << expected;
        EXPECT_EQ(position, expected);
        EXPECT_EQ(out, ">");
    }
    const Pair replaced[] = {{"a\xFF!", "a" + kUnknown + "!"},
                             {kHigh, kUnknown},
                             {kHigh + "x", kUnknown + "x"},
                             {kLow + kHigh + kLow, kUnknown + kFace},
                             {kHigh + kHigh + kLow, kUnknown + kFace},
                             {"\xC3", kUnknown},
                             {"\xC1\xBF", kUnknown + kUnknown},
                             {kFace, kUnknown + kUnknown + kUnknown + kUnknown}};
    for (const auto& [modified, utf8] : replaced) EXPECT_EQ(host::toUtf8(modified), utf8);
}

}  // namespace
