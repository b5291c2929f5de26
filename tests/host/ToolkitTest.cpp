// The stand-in's platform library through its C interface: the edges that the interface fixes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>

#include "host/toolkit/HostContext.h"
#include "host/toolkit/ServerRow.h"
#include "jmsin/MessageKeys.h"
#include "toolkit/kel_adapter_util.h"
#include "toolkit/kel_intl.h"

namespace {

std::string take(char* text) { return std::unique_ptr<char[]>(text).get(); }

// A field as "text", "null", or "none" where there is no such field.
std::string field(void* row, int index) {
    const char* value = "untouched";
    const bool found = getFieldAsStringWithIndex(row, index, &value);
    if (!found) return std::string("none, ") + value;
    return value != nullptr ? value : "null";
}

TEST(ToolkitRows, ByOrder) {
    void* row = createConnectionRow("RowByOrder");
    EXPECT_EQ(size(row), 0);
    EXPECT_EQ(field(row, 0), "none, untouched");
    EXPECT_TRUE(setFieldAsStringWithIndex(row, 2, "c"));
    EXPECT_TRUE(setFieldAsStringWithIndex(row, 0, ""));
    EXPECT_FALSE(setFieldAsStringWithIndex(row, -1, "x"));
    EXPECT_FALSE(setFieldAsStringWithKey(row, "a", "x"));
    setOp(row, 'u');
    EXPECT_EQ(size(row), 3);
    EXPECT_EQ(field(row, 0) + "|" + field(row, 1) + "|" + field(row, 2), "|null|c");
    EXPECT_EQ(field(row, -1) + field(row, 3), "none, untouchednone, untouched");
    EXPECT_TRUE(setFieldAsStringWithIndex(row, 2, nullptr));
    EXPECT_EQ(field(row, 2), "null");
    clearData(row);
    EXPECT_EQ(size(row), 0);
    EXPECT_EQ(getOp(row), '\0');
    setFieldAsStringWithIndex(row, 2, "new");
    EXPECT_EQ(field(row, 0), "null") << "the text of the message before shows";
    deleteConnectionRow(row);
}

TEST(ToolkitRows, ByNames) {
    void* row = createConnectionRow("RowByNames");
    EXPECT_FALSE(setFieldAsStringWithIndex(row, 0, "x"));
    EXPECT_FALSE(setFieldAsStringWithKey(row, nullptr, "x"));
    EXPECT_TRUE(setFieldAsStringWithKey(row, "a", "1"));
    EXPECT_TRUE(setFieldAsStringWithKey(row, "b", nullptr));
    EXPECT_TRUE(setFieldAsStringWithKey(row, "a", "2"));
    EXPECT_EQ(size(row), 2);
    EXPECT_EQ(field(row, 0), "none, untouched");
    const char* value = nullptr;
    EXPECT_TRUE(getFieldAsStringWithKey(row, "a", &value));
    EXPECT_STREQ(value, "2");
    EXPECT_TRUE(getFieldAsStringWithKey(row, "b", &value));
    EXPECT_EQ(value, nullptr);
    EXPECT_FALSE(getFieldAsStringWithKey(row, "c", &value));
    deleteConnectionRow(row);
    EXPECT_EQ(createConnectionRow("RowByChance"), nullptr);
}

TEST(ToolkitParameters, AbsentEmptyAndNotANumber) {
    struct {
        const char* name;
        bool exists;
        const char* text;
        int64_t number;
    } const rows[] = {
        {"absent", false, "", 0},
        {"empty", true, "", 0},
        {"text", true, "12 apples", 0},
        {"number", true, "-12", -12},
        {"blank", true, " 12", 0},
        {"longest", true, "9223372036854775807", INT64_MAX},
        {"longer", true, "9223372036854775808", 0},
    };
    host::Parameters params;
    for (const auto& row : rows) {
        if (row.exists) addConnectionParam(&params, row.name, row.text);
        EXPECT_EQ(doesConnectionParamExist(&params, row.name), row.exists) << row.name;
        EXPECT_EQ(take(getConnectionParamString(&params, row.name)), row.text);
        EXPECT_EQ(take(getConnectionParamAsString(&params, row.name)), row.text);
        EXPECT_EQ(getConnectionParamInt64_t(&params, row.name), row.number) << row.name;
    }
}

TEST(ToolkitErrors, KeepsTheLastThousandAndTellsEachOnce) {
    int told = 0;
    host::setErrorSink([&told](const char*) { ++told; });
    void* errors = createConnectionErrors();
    char untouched[] = "untouched";
    char* text = untouched;
    EXPECT_TRUE(empty(errors));
    EXPECT_EQ(getAdapterError(errors, &text), 0);
    EXPECT_EQ(text, untouched);
    addGeneral(errors, "first");
    addGeneral(errors, "second");
    for (int reading = 0; reading < 2; ++reading) {
        EXPECT_EQ(getAdapterError(errors, &text), 2);
        EXPECT_EQ(take(text), "first\nsecond");
    }
    for (int i = 0; i < 999; ++i) addGeneral(errors, "more");
    EXPECT_EQ(getAdapterError(errors, &text), 1000);
    EXPECT_TRUE(take(text).starts_with("second\nmore\n"));
    EXPECT_EQ(told, 1001);
    const std::string message(9 << 20, 'x');
    for (int i = 0; i < 3; ++i) addGeneral(errors, message.c_str());
    EXPECT_EQ(getAdapterError(errors, &text), 1) << "whole messages fill the memory";
    EXPECT_EQ(take(text), message);
    clearConnectionErrors(errors);
    EXPECT_TRUE(empty(errors));
    deleteConnectionErrors(errors);
    host::setErrorSink({});
}

TEST(ToolkitRowType, OutOfRangeAndNull) {
    host::RowType type("Trades", {{"Symbol", 5, true}, {"Shares", 1, false}});
    EXPECT_EQ(getColumnCount(nullptr, &type), 2);
    EXPECT_EQ(getColumnCount(nullptr, nullptr), 0);
    EXPECT_STREQ(getStreamName(nullptr, &type), "Trades");
    EXPECT_STREQ(getStreamName(nullptr, nullptr), "");
    struct {
        void* type;
        int index;
        const char* name;
        uint32_t code;
        bool key;
    } const rows[] = {{&type, 0, "Symbol", 5, true},
                      {&type, 1, "Shares", 1, false},
                      {&type, 2, nullptr, 6, false},
                      {&type, -1, nullptr, 6, false},
                      {nullptr, 0, nullptr, 6, false}};
    for (const auto& row : rows) {
        EXPECT_STREQ(getColumnName(nullptr, row.type, row.index), row.name) << row.index;
        EXPECT_EQ(getColumnDatatype(nullptr, row.type, row.index), row.code) << row.index;
        EXPECT_EQ(isKeyColumn(nullptr, row.type, row.index), row.key) << row.index;
    }
}

TEST(ToolkitCatalogue, TextsKeysAndSeverities) {
    const std::string file = testing::TempDir() + "catalogue.txt";
    std::ofstream(file) << "# comment\n\n300281-7_A = plain = text\n300288-3_B = {1} before {0}, {9} {x\n";
    EXPECT_EQ(take(getL10NMessageWithTwoParams(nullptr, "300281-7_A", "p", "q")), "300281-7_A p q");
    std::string error;
    ASSERT_TRUE(host::loadCatalogue(file, error)) << error;
    EXPECT_EQ(take(getL10NMessage(nullptr, "300281-7_A")), "300281-7_A: plain = text");
    EXPECT_EQ(take(getL10NMessageWithTwoParams(nullptr, "300288-3_B", "one", "{1}")), "300288-3_B: {1} before one, {9} {x");
    EXPECT_EQ(take(getL10NMessageWithParam(nullptr, "300289-3_C", nullptr)), "300289-3_C ");
    const char* params[] = {"1", "2", "3"};
    EXPECT_EQ(take(getL10NMessageWithMultParams(nullptr, "unknown", 3, params)), "unknown 1 2 3");
    for (const char* faulty : {"no text\n", "= no key\n", "a = 1\na = 2\n", "a = \xFF\n"}) {
        std::ofstream(file) << faulty;
        EXPECT_FALSE(host::loadCatalogue(file, error)) << faulty;
        EXPECT_NE(error.find(file), std::string::npos);
    }
    EXPECT_FALSE(host::loadCatalogue(file + ".absent", error));
    EXPECT_EQ(take(getL10NMessage(nullptr, "300281-7_A")), "300281-7_A: plain = text") << "the loaded one stays";

    struct {
        const char* key;
        int severity;
    } const rows[] = {{"300281-7_A", 7}, {"300288-3_B", 3}, {"30028-3_B", -1}, {"300288-x_B", -1},
                      {"300288-3", -1},  {"", -1},          {nullptr, -1}};
    for (const auto& row : rows) {
        EXPECT_EQ(getErrorSeverity(row.key), row.severity) << (row.key != nullptr ? row.key : "null");
        EXPECT_EQ(checkErrorSeverity(row.key), row.severity == 3 ? 1 : 0);
    }
}

TEST(ToolkitCatalogue, HasATextForEveryKeyOfTheAdapter) {
    std::string error;
    ASSERT_TRUE(host::loadCatalogue(KEL_CATALOGUE, error)) << error;
    for (const char* key : keys::kAll) {
        const std::string text = take(getL10NMessageWithParam(nullptr, key, "PARAMETER"));
        EXPECT_TRUE(text.starts_with(std::string(key) + ": ")) << text;
    }
}

TEST(ToolkitTransactions, ArePostedAndReadBack) {
    host::Context context;
    void* row = createConnectionRow("RowByOrder");
    setStreamName(row, "Control");
    setFieldAsStringWithIndex(row, 1, "-7");
    setOp(row, 'p');
    void* trans = createConnectionRawTrans();
    EXPECT_FALSE(postTransaction(&context, trans));
    pushBackConnectionRawTrans(trans, toRow(row, 0, nullptr));
    EXPECT_EQ(getTransaction(&context, "Control"), nullptr);
    EXPECT_TRUE(postTransaction(&context, trans));
    deleteConnectionRawTrans(trans);
    void* posted = getTransaction(&context, "Control");
    ASSERT_EQ(getConnectionRawTransSize(posted), 1);
    EXPECT_EQ(getConnectionRawTrans(posted, 1), nullptr);
    clearData(row);
    EXPECT_TRUE(fromRow(row, getConnectionRawTrans(posted, 0)));
    EXPECT_EQ(field(row, 0) + "|" + field(row, 1) + "|" + getOp(row), "null|-7|p");
    EXPECT_FALSE(fromRow(row, nullptr));
    deleteConnectionRow(row);
}

TEST(Intl, CopiesAndReads) {
    char buffer[4];
    EXPECT_EQ(MORVEX::Kel::intl_strlcpy(buffer, "abcdef", sizeof buffer), 6U);
    EXPECT_STREQ(buffer, "abc");
    buffer[0] = '#';
    EXPECT_EQ(MORVEX::Kel::intl_strlcpy(buffer, "abc", 0), 3U);
    EXPECT_EQ(buffer[0], '#');
    ::setenv("KEL_TEST_VARIABLE", "value", 1);
    EXPECT_EQ(MORVEX::Kel::intl_getenv("KEL_TEST_VARIABLE", buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "val");
    EXPECT_LT(MORVEX::Kel::intl_getenv("KEL_TEST_ABSENT", buffer, sizeof buffer), 1);
}

}  // namespace
