#include "host/toolkit/ModifiedUtf8.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

const std::string kFace = "\xF0\x9F\x98\x80";              // U+1F600
const std::string kFacePair = "\xED\xA0\xBD\xED\xB8\x80";  // its surrogates
const std::string kUnknown = "\xEF\xBF\xBD";               // U+FFFD

TEST(ModifiedUtf8, GoesBothWays) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"plain", "plain"},
        {"\xC3\xA4\xE2\x82\xAC\xEF\xBF\xBF", "\xC3\xA4\xE2\x82\xAC\xEF\xBF\xBF"},
        {"a\0b"s, "a\xC0\x80"s + "b"},
        {"<" + kFace + ">", "<" + kFacePair + ">"},
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

TEST(ModifiedUtf8, MalformedIsRefusedOnTheWayIn) {
    const std::pair<std::string, size_t> rows[] = {
        {"ab\xFF", 2},
        {"\x80", 0},
        {"a\xC3", 1},
        {"\xE2\x82", 0},
        {"\xC3z", 0},
        {"\xC0\x80", 0},
        {"\xC1\xBF", 0},
        {"\xE0\x9F\xBF", 0},
        {"\xF0\x8F\xBF\xBF", 0},
        {kFacePair, 0},
        {"x\xF4\x90\x80\x80", 1},
        {"\xF8\x88\x80\x80\x80", 0},
    };
    for (const auto& [utf8, expected] : rows) {
        std::string out = ">";
        size_t position = 99;
        EXPECT_FALSE(host::appendModifiedUtf8(utf8, out, &position)) << expected;
        EXPECT_EQ(position, expected);
        EXPECT_EQ(out, ">");
    }
}

TEST(ModifiedUtf8, MalformedIsReplacedOnTheWayOut) {
    const std::string high = kFacePair.substr(0, 3);
    const std::string low = kFacePair.substr(3);
    const std::pair<std::string, std::string> rows[] = {
        {"a\xFF"
         "b",
         "a" + kUnknown + "b"},
        {high, kUnknown},
        {high + "x", kUnknown + "x"},
        {low + high + low, kUnknown + kFace},
        {high + kFacePair, kUnknown + kFace},
        {"\xC3", kUnknown},
        {"\xC1\xBF", kUnknown + kUnknown},
        {kFace, kUnknown + kUnknown + kUnknown + kUnknown},
    };
    for (const auto& [modified, utf8] : rows) EXPECT_EQ(host::toUtf8(modified), utf8);
}

}  // namespace
