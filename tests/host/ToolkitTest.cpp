// The stand-in's platform library through its C interface: the edges that the interface fixes.
#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "host/toolkit/Context.h"
#include "host/toolkit/RowType.h"
#include "host/values/ServerRow.h"
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

size_t bytesInUse() {
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

std::string refusal(void* row) {
    void* errors = createConnectionErrors();
    char* text = nullptr;
    EXPECT_EQ(toRow(row, 0, errors), nullptr);
    EXPECT_EQ(getAdapterError(errors, &text), 1);
    deleteConnectionErrors(errors);
    return take(text);
}

// A message may have as many fields as it has bytes: they are counted, and a discovery reads thousands of them.
TEST(ToolkitRows, FieldsFarBeyondTheColumns) {
    host::RowType type("T", {{"a", 5, true}, {"b", 5, false}});
    constexpr int kCount = 400'000;
    constexpr size_t kMuch = 1 << 20;
    const char* value = nullptr;
    const size_t before = bytesInUse();
    const auto start = std::chrono::steady_clock::now();
    for (const char* kind : {"RowByOrder", "RowByNames"}) {
        SCOPED_TRACE(kind);
        const bool byNames = std::string(kind) == "RowByNames";
        void* row = createConnectionRow(kind);
        setStreamType(row, &type, false);
        const auto nameOf = [](int i) { return i > 0 ? "n" + std::to_string(i) : "a"; };
        const auto get = [&](int i) {
            value = "untouched";
            return byNames ? getFieldAsStringWithKey(row, nameOf(i).c_str(), &value) : getFieldAsStringWithIndex(row, i, &value);
        };
        for (int i = 0; i < kCount; ++i) {
            const std::string text = std::to_string(i);
            byNames ? setFieldAsStringWithKey(row, nameOf(i).c_str(), text.c_str()) : setFieldAsStringWithIndex(row, i, text.c_str());
        }
        if (!byNames) setFieldAsStringWithIndex(row, 10 * kCount - 1, "far");
        EXPECT_EQ(size(row), byNames ? kCount : 10 * kCount);
        for (const int i : {0, 1, 2, 4095}) {
            EXPECT_TRUE(get(i));
            EXPECT_EQ(value, std::to_string(i));
        }
        EXPECT_EQ(get(kCount - 1), !byNames) << "in a row by order all below the size are there";
        EXPECT_FALSE(get(10 * kCount));
        EXPECT_LT(bytesInUse(), before + 2 * kMuch);
        EXPECT_EQ(refusal(row), byNames ? "Stream \"T\": there is no column \"n1\" for the text \"1\"; the columns are a, b."
                                        : "Stream \"T\": field 2 (counted from 0), the text \"2\", has no column; there are 2: a, b.");
        const std::string large(4 * kMuch, 'x');
        byNames ? setFieldAsStringWithKey(row, "b", large.c_str()) : setFieldAsStringWithIndex(row, 1, large.c_str());
        clearData(row);
        EXPECT_LT(bytesInUse(), before + kMuch + large.size()) << "the large text is still there";
        deleteConnectionRow(row);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << "each name was compared with all before";
}

TEST(ToolkitRows, ATypeThatComesAfterTheFields) {
    host::RowType type("T", {{"c", 5, false}, {"a", 5, false}});
    void* row = createConnectionRow("RowByNames");
    for (const char* name : {"a", "KEL_OPS", "c"}) setFieldAsStringWithKey(row, name, "p");
    setStreamType(row, &type, false);
    setFieldAsStringWithKey(row, "a", "again");
    EXPECT_EQ(size(row), 3);
    const std::unique_ptr<host::ServerRow> server(static_cast<host::ServerRow*>(toRow(row, 0, nullptr)));
    ASSERT_TRUE(server);
    EXPECT_EQ(server->values, (std::vector<host::Value>{"p", "again"}));
    EXPECT_EQ(server->op, 'p');
    deleteConnectionRow(row);
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
    host::setErrorSink([&told](const char*, const host::RowFault*) { ++told; });
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
