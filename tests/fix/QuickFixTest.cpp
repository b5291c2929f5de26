// Messages of ours read by QuickFIX, and of QuickFIX by ours.
#include "peers/QuickFix.h"

#include <random>

#include "tests/fix/FixFixture.h"

namespace {

// In header order; none announces the length of a data field.
const std::vector<std::pair<int, std::string>> kColumns = {
    {49, "SenderCompID"}, {56, "TargetCompID"}, {34, "MsgSeqNum"}, {52, "SendingTime"}, {11, "ClOrdID"}, {1, "Account"},
    {55, "Symbol"},       {54, "Side"},         {38, "OrderQty"},  {44, "Price"},       {58, "Text"},    {461, "CFICode"}};

using FixInteroperation = FixFixture;

TEST_F(FixInteroperation, EachReadsTheOther) {
    ASSERT_TRUE(fix.makeDictionary("4.4"));
    Texts names;
    for (const auto& column : kColumns) names.push_back(column.second);
    platform.useStrings(adapter, names);
    std::mt19937 random{20240215};
    int read = 0;
    for (int round = 0; round < 3000; ++round) {
        quickfix::Fields fields, ofTheirs;
        for (size_t i = 0; i < kColumns.size(); ++i) {
            std::string& value = fields[kColumns[i].first];
            for (auto length = 1 + random() % 30; length > 0; --length)
                value += static_cast<char>('>' + random() % ('~' - '>'));  // printable, no "="
            setFieldAsStringWithIndex(row, static_cast<int>(i), value.c_str());
        }
        NewFixUtils::FieldMap theirs, ours;
        std::string message = quickfix::compose("4.4", "8", fields);
        fix.parseFixMessage(message, theirs);
        EXPECT_TRUE(fix.validateFixMessage(theirs, "8"));
        for (const auto& [tag, value] : theirs) ofTheirs[std::stoi(tag)] = value;
        ASSERT_EQ(ofTheirs, quickfix::read(message)) << message;
        EXPECT_EQ(std::stoi(theirs["10"]), fix.calculateCheckSum(message.substr(0, message.rfind("10="))));

        ASSERT_TRUE(fix.rowBufToFixMsg(row, message, "D"));
        fix.parseFixMessage(message, ours);
        if (ours["10"].size() < 3) continue;  // a one-digit sum is padded to two
        for (const char* tag : {"8", "9", "35", "10"}) fields[std::stoi(tag)] = ours[tag];
        ASSERT_NO_THROW(ASSERT_EQ(quickfix::read(message), fields)) << message;
        ++read;
    }
    EXPECT_GT(read, 2700);
}

}  // namespace
