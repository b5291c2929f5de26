// What becomes of a batch's messages: rows, rejects and repeats.
#include "tests/database/Fixture.h"

namespace database {
namespace {

INSTANTIATE_TEST_SUITE_P(Of, Sinks, testing::Values("sqlite", "postgresql"));

// Each opcode on a key that is there, and on one that is not.
TEST_P(Sinks, OpcodesActOnTheTable) {
    const auto sink = open();
    EXPECT_EQ(keep(*sink, {{"m1", 'p', {text("IBM"), number(1), 0.5}}}), "1 0 0");
    const struct {
        char op;
        const char* symbol;
        const char* kept;
        const char* rows;
        const char* reject;
    } rows[] = {
        {'i', "IBM", "0 1 0", "IBM|1|0.5\n", "insert: a row with the key Symbol = \"IBM\" is there already."},
        {'i', "SAP", "1 0 0", "IBM|1|0.5\nSAP|2|~\n", ""},
        {'u', "SAP", "1 0 0", "IBM|1|0.5\nSAP|3|~\n", ""},
        {'u', "X", "0 1 0", "IBM|1|0.5\nSAP|3|~\n", "update: there is no row with the key Symbol = \"X\"."},
        {'p', "IBM", "1 0 0", "IBM|5|~\nSAP|3|~\n", ""},
        {'d', "IBM", "1 0 0", "SAP|3|~\n", ""},
        {'d', "IBM", "0 1 0", "SAP|3|~\n", "delete: there is no row with the key Symbol = \"IBM\"."},
        {'s', "IBM", "1 0 0", "SAP|3|~\n", ""},
        {'s', "SAP", "1 0 0", "", ""},
    };
    std::int64_t shares = 0;
    for (const auto& row : rows) {
        const std::string id = "m1" + std::to_string(++shares);
        SCOPED_TRACE(id);
        EXPECT_EQ(keep(*sink, {{id, row.op, {text(row.symbol), number(shares), Value()}}}), row.kept);
        EXPECT_EQ(ask("SELECT * FROM \"Trades\" ORDER BY 1;"), row.rows);
        EXPECT_EQ(last.messages[0].reject ? last.messages[0].reject->text : "", row.reject);
    }
    EXPECT_EQ(ask("SELECT count(*) FROM kel_rejected;"), "3\n");
}

}  // namespace
}  // namespace database
