// fuzz/fix compares reading and composing with a plain reading and writing; here is what these rest on, and the
// texts that are known.
#include "tests/fix/FixFixture.h"

namespace {

class FixCodec : public FixFixture {
protected:
    using Fields = NewFixUtils::FieldMap;

    // Loads the dictionary, and a row of the values under the columns.
    void start(const Texts& columns, const std::vector<const char*>& values = {}) {
        ASSERT_TRUE(fix.makeDictionary("4.2"));
        platform.useStrings(adapter, columns);
        clearData(row);
        for (size_t i = 0; i < values.size(); ++i) setFieldAsStringWithIndex(row, static_cast<int>(i), values[i]);
        platform.takeLogs();
    }
};

TEST_F(FixCodec, Split) {
    const std::tuple<const char*, const char*, Texts> kRows[] = {
        {"35=D", "=", {"35", "D"}},        {"58=", "=", {"58", ""}},  {"=x", "=", {"", "x"}}, {"abc", "=", {"abc"}},  {"", "=", {"", ""}},
        {"58=a=b", "=", {"58", "a", "b"}}, {"==", "=", {"", "", ""}}, {"", "ab", {""}},       {"x", "ab", {"x", ""}}, {"xy", "ab", {"xy"}},
        {"1ab2ab", "ab", {"1", "2", ""}},  {"abc", "", {"abc"}},      {"", "", {"", ""}},
    };
    for (auto [text, delimiter, parts] : kRows) {
        Texts found = {"kept"};
        fix.splitString(text, delimiter, found);
        parts.insert(parts.begin(), "kept");
        EXPECT_EQ(found, parts) << text;
    }
}

TEST_F(FixCodec, ValidateChecksVersionThenType) {
    const std::string kWrong = "Error: FIX message has wrong FIX version number ";
    const std::tuple<Fields, bool, std::string> kRows[] = {
        {{{"8", "FIX.4.2"}, {"35", "D"}}, true, ""},
        {{{"8", "any!4.2"}, {"35", "D"}}, true, ""},
        {{{"8", "FIX.4.2"}, {"35", "DA"}}, false, ""},
        {{{"8", "FIX.4.2"}, {"35", "d"}}, false, ""},
        {{{"8", "FIX.4.2"}}, false, "Error: FIX message contains no message type tag"},
        {{{"35", "D"}}, false, "Error: FIX message contains no FIX version tag"},
        {{{"8", "FIX.4.21"}}, false, kWrong + "4.21"},
        {{{"8", "FIXT.1.1"}, {"35", "D"}}, false, kWrong + ".1.1"},
        {{{"8", "FIX."}, {"35", "D"}}, false, kWrong},
    };
    start({});
    for (const auto& [fields, valid, error] : kRows) {
        EXPECT_EQ(fix.validateFixMessage(fields, "D"), valid);
        expectLogs("validateFixMessage", error);
    }
    EXPECT_THROW(fix.validateFixMessage({{"8", "FIX"}, {"35", "D"}}, "D"), std::out_of_range);
}

TEST_F(FixCodec, FieldsToRow) {
    start({"Side", "Symbol", "Price"});
    EXPECT_TRUE(fix.fixMsgToRowBuf({{"55", "IBM"}, {"44", ""}, {"999", "x"}}, row));
    EXPECT_EQ(fake::show(row), "i null,IBM,");
    expectLogs("fixMsgToRowBuf", "");
}

TEST_F(FixCodec, RowToMessage) {
    const char* const kTenTimes80 = "\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80";
    const std::tuple<Texts, std::vector<const char*>, std::string, std::string> kRows[] = {
        {{"Symbol", "Side"}, {"IBM", "1"}, "8=FIX.4.2|9=17|35=D|55=IBM|54=1|10=064|", ""},
        {{"Symbol", "Side"}, {nullptr, ""}, "8=FIX.4.2|9=13|35=D|55=|54=|10=051|", ""},
        {{}, {}, "8=FIX.4.2|9=5|35=D|10=181|", ""},
        // One digit gains one zero, and four characters stay as they are.
        {{"Text"}, {"{"}, "8=FIX.4.2|9=10|35=D|58={|10=07|", ""},
        {{"Text"}, {kTenTimes80}, std::string("8=FIX.4.2|9=19|35=D|58=") + kTenTimes80 + "|10=-107|", ""},
        {{"Text", "Bogus"}, {"a", "x"}, "8=FIX.4.2|35=D|58=a|", "Column name Bogus not found in FIX dictionary"},
        {{"Text", "Side"}, {"a"}, "8=FIX.4.2|35=D|58=a|", "Cannot get value of column at 1"},
    };
    for (const auto& [columns, values, message, error] : kRows) {
        start(columns, values);
        std::string text = "replaced";
        EXPECT_EQ(fix.rowBufToFixMsg(row, text, "D"), error.empty());
        EXPECT_EQ(text, soh(message));
        expectLogs("rowBufToFixMsg", error);
    }
}

// fuzz/fix compares it with the three operations that it stands for.
TEST_F(FixCodec, MessageToRow) {
    using enum NewFixUtils::Outcome;
    start({"Symbol", "Side"});
    const std::string message = soh("8=FIX.4.2|35=D|55=SAP|38=7|55=IBM|");
    EXPECT_EQ(fix.messageToRow(message, "D", row), kRow);
    EXPECT_EQ(fake::show(row), "i IBM,null");
    EXPECT_EQ(fix.messageToRow(message, "8", row), kSkipped);
    writeDictionary("4.2", "38=Symbol\n");  // another tag for a column that is in use
    ASSERT_TRUE(fix.makeDictionary("4.2"));
    platform.useStrings(adapter, {"Symbol"});
    EXPECT_EQ(fix.messageToRow(message, "D", row), kRow);
    EXPECT_EQ(fake::show(row), "i 7,null");
}

// There is nobody to report to, and there are no columns; what needs neither works.
TEST_F(FixCodec, WithoutAnAdapter) {
    using enum NewFixUtils::Outcome;
    NewFixUtils unbound;
    EXPECT_FALSE(unbound.makeDictionary("none"));
    ASSERT_TRUE(unbound.makeDictionary("4.2"));
    const std::string message = soh("8=FIX.4.2|35=D|55=IBM|");
    Fields fields;
    ASSERT_TRUE(unbound.parseFixMessage(message, fields));
    EXPECT_TRUE(fields["55"] == "IBM" && unbound.validateFixMessage(fields, "D") && !unbound.validateFixMessage({}, "D"));
    std::string text = "replaced";
    EXPECT_FALSE(unbound.fixMsgToRowBuf(fields, row) || unbound.rowBufToFixMsg(row, text, "D"));
    EXPECT_EQ(text + fake::show(row), soh("8=FIX.4.2|35=D|-"));
    EXPECT_TRUE(unbound.messageToRow(message, "D", row) == kBad && unbound.messageToRow(message, "8", row) == kSkipped);
    int socket = 0;
    sockaddr_in address;
    EXPECT_FALSE(unbound.openSocketSource(socket, address, "no host", 1, 0, 1));
    EXPECT_FALSE(unbound.openSocketSource(socket, address, "127.0.0.1", 1, 0, 1));
    EXPECT_FALSE(unbound.reconnectToSocketSource(socket, address, "127.0.0.1", 1, 0, 1));
    EXPECT_TRUE(unbound.closeSocketConnection(socket));
}

TEST_F(FixCodec, CheckSum) {
    // The bytes are signed, and the sum wraps around like the 32-bit integer it is.
    const std::string wrapping = std::string((size_t{1} << 24) + 1, '\x80') + "A";
    for (const auto& [text, sum] : std::map<std::string, int>{
             {"", 0}, {"ab", 195}, {"xyz", 107}, {"\x80", -128}, {"\xff\xff", -2}, {"\x80\x80\x80", -128}, {wrapping, 193}})
        EXPECT_EQ(fix.calculateCheckSum(text), sum) << text.size();
}

}  // namespace
