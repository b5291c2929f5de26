// Values of every type as the database's own client shows them.
#include <cmath>
#include <limits>

#include "tests/database/Fixture.h"

namespace database {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class Values : public Sinks {};
INSTANTIATE_TEST_SUITE_P(Of, Values, testing::Values("sqlite", "postgresql"));

TEST_P(Values, StandAsTheyWere) {
    const auto decimal = DataTypes::createFixedDecimal(34, 10);
    const std::string big = "123456789012345678901234.0123456789";
    const struct {
        unsigned int type;
        Value value;
        std::string sqlite;
        std::string postgres;
    } rows[] = {
        {DataTypes::kInt16, number(-32768), "-32768", "-32768"},
        {DataTypes::kInteger, number(2147483647), "2147483647", "2147483647"},
        {DataTypes::kLong, number(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808", "-9223372036854775808"},
        {DataTypes::kFloat, 0.1, "0.1", "0.1"},
        {DataTypes::kFloat, -1.5e300, "-1.5e+300", "-1.5e+300"},
        {DataTypes::kFloat, kInfinity, "Inf", "Infinity"},
        {DataTypes::kFloat, std::nan(""), "~", "NaN"},
        {DataTypes::kBoolean, true, "1", "t"},
        {DataTypes::kBoolean, false, "0", "f"},
        {DataTypes::kString, text(""), "", ""},
        {DataTypes::kString, text("'\"\\ \xC3\xA4\xED\xA0\xBD\xED\xB8\x80"), "'\"\\ \xC3\xA4\xF0\x9F\x98\x80",
         "'\"\\ \xC3\xA4\xF0\x9F\x98\x80"},
        {DataTypes::kBinary, text("00DEADBEEF"), "00DEADBEEF", "\\x00deadbeef"},
        {DataTypes::kBinary, text(""), "", "\\x"},
        {DataTypes::kDate, text("2023-11-14 22:13:21"), "2023-11-14 22:13:21", "2023-11-14 22:13:21"},
        {DataTypes::kTimestamp, text("2024-01-31 23:50:00.250"), "2024-01-31 23:50:00.250", "2024-01-31 23:50:00.25"},
        {DataTypes::kTimestamp, text("10000-01-01 00:00:00.001"), "10000-01-01 00:00:00.001", "10000-01-01 00:00:00.001"},
        {DataTypes::kTimestamp, text("0001-01-01 00:00:00.000"), "0001-01-01 00:00:00.000", "0001-01-01 00:00:00"},
        {DataTypes::kBigdatetime, text("1969-12-31 23:59:59.999999"), "1969-12-31 23:59:59.999999", "1969-12-31 23:59:59.999999"},
        {DataTypes::kTime, text("23:59:59"), "23:59:59", "23:59:59"},
        {DataTypes::kInterval, text("-9223372036854775808"), "-9223372036854775808", "-9223372036854775808"},
        {DataTypes::kMoney, text("-922337203685477.5808"), "-922337203685477.5808", "-922337203685477.5808"},
        {DataTypes::kMoney1 + 1, text("0.01"), "0.01", "0.01"},
        {decimal, text(big.c_str()), big, big},
    };
    std::vector<host::Column> columns = {{"Symbol", DataTypes::kString, true}};
    Sent all{"1", 'i', {text("key")}}, none{"2", 'i', {text("null")}};
    std::string select = "SELECT ", expected, nulls;
    for (const auto& one : rows) {
        const std::string name = "c " + std::to_string(columns.size());
        select += (columns.size() > 1 ? ", " : "") +
                  (isPostgres() || one.type != DataTypes::kBinary ? '"' + name + '"' : "hex(\"" + name + "\")");
        columns.push_back({name, one.type, false});
        all.values.push_back(one.value);
        none.values.emplace_back();
        expected += (expected.empty() ? "" : "|") + (isPostgres() ? one.postgres : one.sqlite);
    }
    for (const SinkMode mode : {SinkMode::kApply, SinkMode::kAppend}) {
        settings.mode = mode;
        settings.table = mode == SinkMode::kApply ? "Trades" : "All \"Trades\"";
        type = std::make_unique<host::RowType>("Trades", columns);
        const auto sink = open();
        keep(*sink, {all, none});
        Sent gone{"3", 's', none.values};
        gone.values[0] = text("x");
        if (mode == SinkMode::kApply) keep(*sink, {gone});
        const std::string table = mode == SinkMode::kApply ? " FROM \"Trades\"" : " FROM \"All \"\"Trades\"\"\"";
        EXPECT_EQ(ask(select + table + " WHERE \"Symbol\" = 'key';"), expected + '\n');
        EXPECT_EQ(
            ask("SELECT count(*)" + table + " WHERE coalesce(\"c 1\", 0) = 0 AND \"c 10\" IS NULL AND \"c 12\" IS NULL;").substr(0, 1),
            "1");
        EXPECT_EQ(host::databaseProblems(settings, *type), Texts()) << "what was made is what is wanted";
    }
}

// PostgreSQL has narrower types; what does not fit is a reject beside rows that are kept.
TEST_P(Values, ThatDoNotFitAreRejects) {
    if (!isPostgres()) GTEST_SKIP() << "SQLite takes them all";
    type = std::make_unique<host::RowType>("Trades", std::vector<host::Column>{{"Symbol", DataTypes::kString, true},
                                                                               {"At", DataTypes::kTimestamp, false},
                                                                               {"Note", DataTypes::kString, false},
                                                                               {"Took", DataTypes::kInterval, false}});
    ask("CREATE TABLE \"Trades\" (\"Symbol\" text PRIMARY KEY, \"At\" timestamptz, \"Note\" varchar(3), \"Took\" interval);");
    std::string randomKey;
    for (int i = 0; i < 4000; ++i) randomKey += std::to_string(i * 7919L % 65537);
    const struct {
        const char* note;
        const char* at;
        const char* code;
        const char* sentence;
    } rows[] = {
        {"abc", "2024-01-31 23:50:00.250", nullptr, ""},
        {"abcd", "2024-01-31 23:50:00.250", "22001", "value too long for type character varying(3)"},
        {"a\xC0\x80", "2024-01-31 23:50:00.250", "", "column \"Note\" has a U+0000, which a text in a database cannot have."},
        {"abc", "300000-01-01 00:00:00.000", "22008",
         "column \"At\" is \"300000-01-01 00:00:00.000\", which is beyond PostgreSQL's timestamps."},
        {"abc", "-001-01-01 00:00:00.000", "22008", "beyond"},
        {nullptr, nullptr, "54000", "index row requires"},
    };
    for (const bool isMixed : {false, true}) {
        const auto sink = open();
        for (const auto& [note, at, code, sentence] : rows) {
            Sent sent{"m", isMixed ? 'i' : 'p', {text(note != nullptr ? "IBM" : randomKey.c_str()), Value(), Value(), text("-1")}};
            if (at != nullptr) sent.values[1] = text(at);
            if (note != nullptr) sent.values[2] = text(note);
            static int count = 0;
            sent.id += std::to_string(++count);
            if (isMixed) ask("DELETE FROM \"Trades\";");
            const std::string kept = keep(*sink, {sent, {sent.id + "b", 'p', {text("SAP"), Value(), Value(), Value()}}});
            EXPECT_EQ(kept, code == nullptr ? "2 0 0" : "1 1 0");
            if (code == nullptr) continue;
            ASSERT_TRUE(last.messages[0].reject) << code;
            EXPECT_EQ(last.messages[0].reject->key, code) << last.messages[0].reject->text;
            EXPECT_NE(last.messages[0].reject->text.find(sentence), std::string::npos) << last.messages[0].reject->text;
        }
        const std::string there = ask("SELECT * FROM \"Trades\" WHERE \"Symbol\" = 'IBM';");
        EXPECT_EQ(there, isMixed ? "" : "IBM|2024-01-31 23:50:00.25+00|abc|-00:00:00.000001\n");
    }
}

}  // namespace
}  // namespace database
