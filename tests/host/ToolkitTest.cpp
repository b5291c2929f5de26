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

const std::string kNone = "none untouched|";

// The fields from index -1 up to the size.
std::string fields(void* row) {
    std::string all;
    for (int i = -1; i <= size(row); ++i) {
        const char* value = "untouched";
        if (!getFieldAsStringWithIndex(row, i, &value)) all += "none ";
        all += std::string(value != nullptr ? value : "null") + "|";
    }
    return all;
}

TEST(ToolkitRows, ByOrder) {
    void* row = createConnectionRow("RowByOrder");
    EXPECT_EQ(fields(row), kNone + kNone);
    EXPECT_TRUE(setFieldAsStringWithIndex(row, 2, "c"));
    EXPECT_TRUE(setFieldAsStringWithIndex(row, 0, ""));
    EXPECT_FALSE(setFieldAsStringWithIndex(row, -1, "x"));
    EXPECT_FALSE(setFieldAsStringWithKey(row, "a", "x"));
    setOp(row, 'u');
    EXPECT_EQ(fields(row), kNone + "|null|c|" + kNone);
    EXPECT_TRUE(setFieldAsStringWithIndex(row, 2, nullptr));
    EXPECT_EQ(fields(row), kNone + "|null|null|" + kNone);
    clearData(row);
    EXPECT_EQ(fields(row) + getOp(row), kNone + kNone + '\0');
    setFieldAsStringWithIndex(row, 2, "new");
    EXPECT_EQ(fields(row), kNone + "null|null|new|" + kNone) << "the text of the message before shows";
    deleteConnectionRow(row);
}

TEST(ToolkitRows, ByNames) {
    void* row = createConnectionRow("RowByNames");
    EXPECT_FALSE(setFieldAsStringWithIndex(row, 0, "x"));
    EXPECT_FALSE(setFieldAsStringWithKey(row, nullptr, "x"));
    for (const char* text : {"1", "2"}) EXPECT_TRUE(setFieldAsStringWithKey(row, "a", text));
    EXPECT_TRUE(setFieldAsStringWithKey(row, "b", nullptr));
    EXPECT_EQ(fields(row), kNone + kNone + kNone + kNone) << "two fields, but not by index";
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
    const std::pair<const char*, int64_t> rows[] = {
        {"", 0}, {"12 apples", 0}, {"-12", -12}, {" 12", 0}, {"9223372036854775807", INT64_MAX}, {"9223372036854775808", 0}};
    host::Parameters params;
    EXPECT_FALSE(doesConnectionParamExist(&params, "name"));
    EXPECT_EQ(take(getConnectionParamString(&params, "name")), "");
    for (const auto& [text, number] : rows) {
        addConnectionParam(&params, "name", text);
        EXPECT_TRUE(doesConnectionParamExist(&params, "name"));
        EXPECT_EQ(take(getConnectionParamString(&params, "name")), text);
        EXPECT_EQ(take(getConnectionParamAsString(&params, "name")), text);
        EXPECT_EQ(getConnectionParamInt64_t(&params, "name"), number) << text;
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
    const auto column = [](void* of, int index) {
        const char* name = getColumnName(nullptr, of, index);
        const bool isKey = isKeyColumn(nullptr, of, index);
        return std::string(name != nullptr ? name : "none") + " " + std::to_string(getColumnDatatype(nullptr, of, index)) +
               (isKey ? " key" : "");
    };
    EXPECT_EQ(column(&type, 0), "Symbol 5 key");
    EXPECT_EQ(column(&type, 1), "Shares 1");
    for (const int index : {2, -1}) EXPECT_EQ(column(&type, index), "none 6");
    EXPECT_EQ(column(nullptr, 0), "none 6");
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

    for (const char* key : {"30028-3_B", "300288-x_B", "300288-3", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(getErrorSeverity(key), -1) << (key != nullptr ? key : "null");
        EXPECT_EQ(checkErrorSeverity(key), 0);
    }
    EXPECT_EQ(getErrorSeverity("300281-7_A"), 7);
    EXPECT_EQ(checkErrorSeverity("300281-7_A"), 0);
    EXPECT_EQ(getErrorSeverity("300288-3_B"), 3);
    EXPECT_EQ(checkErrorSeverity("300288-3_B"), 1);
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
    EXPECT_EQ(fields(row) + getOp(row), kNone + "null|-7|" + kNone + "p");
    EXPECT_FALSE(fromRow(row, nullptr));
    deleteConnectionRow(row);
}

TEST(Intl, CopiesAndReads) {
    char buffer[4] = "#";
    EXPECT_EQ(MORVEX::Kel::intl_strlcpy(buffer, "abc", 0), 3U);
    EXPECT_STREQ(buffer, "#");
    EXPECT_EQ(MORVEX::Kel::intl_strlcpy(buffer, "abcdef", sizeof buffer), 6U);
    EXPECT_STREQ(buffer, "abc");
    ::setenv("KEL_TEST_VARIABLE", "value", 1);
    EXPECT_EQ(MORVEX::Kel::intl_getenv("KEL_TEST_VARIABLE", buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "val");
    EXPECT_LT(MORVEX::Kel::intl_getenv("KEL_TEST_ABSENT", buffer, sizeof buffer), 1);
}

}  // namespace
