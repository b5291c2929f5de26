// Messages of ours read by QuickFIX, and of QuickFIX by ours.
#include "bench/fix/QuickFix.h"

#include <random>

#include "tests/fix/FixFixture.h"

namespace {

// In header order; none announces the length of a data field.
const std::vector<std::pair<int, std::string>> kColumns = {
    {49, "SenderCompID"}, {56, "TargetCompID"}, {34, "MsgSeqNum"}, {52, "SendingTime"}, {11, "ClOrdID"}, {1, "Account"},
    {55, "Symbol"},       {54, "Side"},         {38, "OrderQty"},  {44, "Price"},       {58, "Text"},    {461, "CFICode"}};

class FixInteroperation : public FixFixture {
protected:
    std::mt19937 random{20240215};
    quickfix::Fields fields;
    NewFixUtils::FieldMap ours;

    FixInteroperation() { EXPECT_TRUE(fix.makeDictionary("4.4")); }

    void makeFields() {
        fields.clear();
        for (const auto& column : kColumns) {
            std::string& value = fields[column.first];
            for (auto length = 1 + random() % 30; length > 0; --length)
                value += static_cast<char>('>' + random() % ('~' - '>'));  // printable, no "="
        }
        ours.clear();
        platform.takeLogs();
    }
};

TEST_F(FixInteroperation, QuickFixReadsOurs) {
    Texts names;
    for (const auto& column : kColumns) names.push_back(column.second);
    platform.useStrings(adapter, names);
    int read = 0;
    for (int round = 0; round < 3000; ++round) {
        makeFields();
        for (size_t i = 0; i < kColumns.size(); ++i) setFieldAsStringWithIndex(row, static_cast<int>(i), fields[kColumns[i].first].c_str());
        std::string message;
        ASSERT_TRUE(fix.rowBufToFixMsg(row, message, "D"));
        fix.parseFixMessage(message, ours);
        if (ours["10"].size() < 3) continue;  // a one-digit sum is padded to two
        for (const char* tag : {"8", "9", "35", "10"}) fields[std::stoi(tag)] = ours[tag];
        ASSERT_NO_THROW(ASSERT_EQ(quickfix::read(message), fields)) << message;
        ++read;
    }
    EXPECT_GT(read, 2700);
}

TEST_F(FixInteroperation, WeReadQuickFix) {
    for (int round = 0; round < 3000; ++round) {
        makeFields();
        const std::string message = quickfix::compose("4.4", "8", fields);
        fix.parseFixMessage(message, ours);
        EXPECT_TRUE(fix.validateFixMessage(ours, "8"));
        quickfix::Fields read;
        for (const auto& [tag, value] : ours) read[std::stoi(tag)] = value;
        ASSERT_EQ(read, quickfix::read(message)) << message;
        EXPECT_EQ(std::stoi(ours["10"]), fix.calculateCheckSum(message.substr(0, message.rfind("10="))));
    }
}

TEST_F(FixInteroperation, TheExamplesAreValid) {
    for (const auto& [folder, version] : {std::pair("fix-4.2", "FIX.4.2"), std::pair("fix", "FIX.4.4")}) {
        std::ifstream file(KEL_SOURCE_DIR "/examples/" + std::string(folder) + "/messages.txt");
        std::string line;
        for (int count = 0; std::getline(file, line) || count < 3; ++count)
            ASSERT_NO_THROW(EXPECT_EQ(quickfix::read(line)[8], version)) << line;
    }
}

}  // namespace
