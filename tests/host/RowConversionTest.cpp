// From texts to a server row: what each type takes, and the one sentence where a row is refused.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <sstream>
#include <tuple>

#include "host/process/Failure.h"
#include "host/rows/RowFormat.h"
#include "host/toolkit/RowType.h"
#include "host/values/ValueTyping.h"
#include "toolkit/kel_adapter_util.h"

namespace {

class RowConversion : public ::testing::Test {
protected:
    host::RowType type{"T", {{"Key", 5, true}, {"Short", 0, false}, {"Int", 1, false}, {"Long", 2, false}, {"Float", 3, false}}};
    void* errors = createConnectionErrors();
    ~RowConversion() override { deleteConnectionErrors(errors); }

    // The row's JSON line, or the sentence that refuses it. Fields are "text|text" by order, or "name=text|name=text"; "~" is null.
    std::string convert(const std::string& fields, char op = '\0') {
        const bool byNames = fields.find('=') != std::string::npos;
        void* row = createConnectionRow(byNames ? "RowByNames" : "RowByOrder");
        setStreamType(row, &type, false);
        std::stringstream list(fields);
        int index = 0;
        for (std::string text; std::getline(list, text, '|');) {
            const std::string name = text.substr(0, text.find('='));
            if (byNames) text.erase(0, name.size() + 1);
            const char* value = text == "~" ? nullptr : text.c_str();
            byNames ? setFieldAsStringWithKey(row, name.c_str(), value) : setFieldAsStringWithIndex(row, index++, value);
        }
        setOp(row, op);
        clearConnectionErrors(errors);
        const std::unique_ptr<host::ServerRow> server(static_cast<host::ServerRow*>(toRow(row, 41, errors)));
        deleteConnectionRow(row);
        std::string line;
        if (server) host::makeJsonLines(type)->append(*server, line);
        char* text = nullptr;
        EXPECT_EQ(getAdapterError(errors, &text), server ? 0 : 1);
        return server ? line : std::unique_ptr<char[]>(text).get();
    }
};

TEST_F(RowConversion, RowsAndRefusals) {
    const std::string begin = R"({"stream":"T","op":"i","seq":41,"row":{"Key":"k","Short":)";
    const std::string refused = "Stream \"T\": ";
    const std::string noKey = refused + "key column \"Key\" (string) is null in the message; a key column needs a value.";
    const std::string noOpcode = " is none; allowed are i (insert), u (update), d (delete), p (upsert) and s (safe delete).";
    struct {
        const char* fields;
        std::string expected;
        char op = '\0';
    } const rows[] = {
        {"k|-32768|+7|9223372036854775807|25.50", begin + "-32768,\"Int\":7,\"Long\":9223372036854775807,\"Float\":25.5}}\n"},
        {"k", begin + "null,\"Int\":null,\"Long\":null,\"Float\":null}}\n"},
        {"Long=1|Key=k|Float=~", begin + "null,\"Int\":null,\"Long\":1,\"Float\":null}}\n"},
        {"k|32768", refused + R"(column "Short" (int16) cannot hold the text "32768": 16-bit integer constant out of range.)"},
        {"Int=|Key=k",
         refused + R"(column "Int" (integer) cannot hold the text "": integer constant does not begin with a legal character.)"},
        {"k|1|1|1|1|x", refused + R"(field 5 (counted from 0), the text "x", has no column; there are 5: Key, Short, Int, Long, Float.)"},
        {"Key=k|Prize=~", refused + "there is no column \"Prize\" for null; the columns are Key, Short, Int, Long, Float."},
        {"~|1", noKey},
        {"Int=1", noKey},
        {"k", refused + "the opcode \"I\"" + noOpcode, 'I'},
        {"Key=k|KEL_OPS=", refused + "the opcode \"\"" + noOpcode},
    };
    for (const auto& row : rows) EXPECT_EQ(convert(row.fields, row.op), row.expected);
    // A long text is cut between characters, a pair of halves being one.
    const std::string umlauts = "\xC3\xA4\xC3\xA4";
    const std::string pair = "\xED\xA0\xBD\xED\xB8\x80";
    const std::tuple<size_t, std::string, std::string> cuts[] = {
        {199, umlauts, ""}, {198, umlauts, "\xC3\xA4"}, {195, pair, ""}, {197, pair, ""}, {199, pair, ""}};
    for (const auto& [count, end, kept] : cuts) {
        const std::string plain(count, 'x');
        EXPECT_NE(convert("Key=k|Int=" + plain + end).find('"' + plain + kept + "...\" ("), std::string::npos) << count << end;
    }
    const auto opOf = [](const std::string& line) { return line.substr(line.find("\"op\":") + 6, 1); };
    for (const char op : {'i', 'u', 'd', 'p', 's'}) EXPECT_EQ(opOf(convert("k", op)), std::string(1, op));
    EXPECT_EQ(opOf(convert("Key=k|KEL_OPS=delete", 'u')), "d");
    EXPECT_EQ(opOf(convert("Key=k|KEL_OPS=~")), "i");
}

// Each type of the server: a text as a row writes it, or why not.
TEST_F(RowConversion, Types) {
    const host::TemporalFormats formats = {host::kDefaultTimeFormat, "%d.%m.%Y", host::kDefaultDateFormat};
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"date", "02.01.2020", "2020-01-02 00:00:00"},
        {"date", "2020-01-02", "date constant does not match format"},
        {"timestamp", "2020-01-02T03:04:05.5", "2020-01-02 03:04:05.500"},
        {"bigdatetime", "2020-01-02T03:04:05.000001", "2020-01-02 03:04:05.000001"},
        {"time", "03:04:05", "03:04:05"},
        {"money(2)", "-0.50", "-0.50"},
        {"decimal(5,2)", "123.455", "123.46"},
        {"decimal(5,2)", "1000", "input exceeds specified precision"},
        {"binary", "0aFF", "0AFF"},
        {"double", "2.5", "2.5"},
    };
    for (const auto& [name, text, expected] : rows) {
        const auto code = host::typeCode(name);
        ASSERT_TRUE(code) << name;
        host::Value value;
        std::string reason;
        const bool isRead = host::readValue(*code, text, formats, value, reason);
        EXPECT_EQ(isRead ? host::writeValue(value) : reason, expected) << name << " " << text;
    }
    for (const char* name : {"Long", "N/A", "", "decimal", "decimal(3,5)", "decimal(35,2)", "money(16)"}) {
        EXPECT_FALSE(host::typeCode(name)) << name;
    }
}

// ---- rows as text

std::string rendered(host::RowFormat& format, const host::RowType& type, std::vector<host::Value> values) {
    const host::ServerRow row{&type, type.streamName, 'u', 7, std::move(values)};
    std::string text;
    format.append(row, text);
    return text;
}

TEST(RowFormats, JsonIsExact) {
    const host::RowType type("S\"\xED\xA0\xBD\xED\xB8\x80", {{"v", 3, false}});
    const auto format = host::makeJsonLines(type);
    const std::string begin = "{\"stream\":\"S\\\"\xF0\x9F\x98\x80\",\"op\":\"u\",\"seq\":7,\"row\":{\"v\":";
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const struct {
        host::Value value;
        const char* text;
    } rows[] = {{host::Value(), "null"},
                {int64_t{-9007199254740993}, "-9007199254740993"},
                {0.1, "0.1"},
                {100.0, "100"},
                {1e22, "1e+22"},
                {-0.0, "-0"},
                {std::numeric_limits<double>::denorm_min(), "5e-324"},
                {kInfinity, "\"Infinity\""},
                {-kInfinity, "\"-Infinity\""},
                {std::numeric_limits<double>::quiet_NaN(), "\"NaN\""},
                {std::string("a\"\\/\n\x01\xC0\x80"), "\"a\\\"\\\\/\\n\\u0001\\u0000\""},
                {std::string(), "\"\""}};
    for (const auto& [value, text] : rows) EXPECT_EQ(rendered(*format, type, {value}), begin + text + "}}\n");
    for (const std::string text : {"true", "false"}) {
        host::Value flag;
        std::string reason;
        ASSERT_TRUE(host::readValue(*host::typeCode("boolean"), text, {}, flag, reason)) << reason;
        EXPECT_EQ(rendered(*format, type, {flag}), begin + text + "}}\n");
        EXPECT_EQ(rendered(*host::makeCsv(type, false), type, {flag}), "u,7," + text + "\n");
        EXPECT_EQ(rendered(*host::makeTable(type), type, {flag}).substr(39), "u          7  " + text + "\n");
    }
}

TEST(RowFormats, CsvQuotesWhatWouldNotReadBack) {
    const host::RowType type("S", {{"a,b", 5, false}, {"n", 1, false}});
    const auto format = host::makeCsv(type, true);
    EXPECT_EQ(rendered(*format, type, {host::Value(), int64_t{1}}), "op,seq,\"a,b\",n\nu,7,,1\n");
    EXPECT_EQ(rendered(*format, type, {std::string(), host::Value()}), "u,7,\"\",\n");
    EXPECT_EQ(rendered(*format, type, {std::string("x\"y\nz"), host::Value()}), "u,7,\"x\"\"y\nz\",\n");
    EXPECT_EQ(rendered(*host::makeCsv(type, false), type, {std::string("x"), 0.5}), "u,7,x,0.5\n");
}

TEST(RowFormats, TableAlignsAndNeverSteersTheTerminal) {
    const host::RowType type("S", {{"Name", 5, false}, {"N", 1, false}});
    const auto format = host::makeTable(type);
    EXPECT_EQ(rendered(*format, type, {std::string("\xC3\xA4\x1B[2J\xC2\x9B\xE2\x80\xAE"), int64_t{-5}}),
              "op  seq       Name      N\n--  --------  --------  --------\n"
              "u          7  \xC3\xA4\\x1B[2J\\u009B\\u202E        -5\n");
    EXPECT_EQ(rendered(*format, type, {host::Value(), host::Value()}), "u          7  -" + std::string(21, ' ') + "-\n");
}

}  // namespace
