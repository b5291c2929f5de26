// What becomes of a batch's messages: rows, rejects and repeats.
#include "host/database/RejectStore.h"
#include "tests/database/Fixture.h"

namespace database {
namespace {

INSTANTIATE_TEST_SUITE_P(Of, Sinks, testing::Values("sqlite", "postgresql"));

constexpr char kAll[] = "SELECT * FROM \"Trades\" ORDER BY 1;";

Sent row(const char* id, char op, const char* symbol, std::int64_t shares) { return {id, op, {text(symbol), number(shares), Value()}}; }

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
    for (const auto& [op, symbol, kept, table, reject] : rows) {
        const std::string id = "m1" + std::to_string(++shares);
        SCOPED_TRACE(id);
        EXPECT_EQ(keep(*sink, {{id, op, {text(symbol), number(shares), Value()}}}), kept);
        EXPECT_EQ(ask(kAll), table);
        EXPECT_EQ(last.messages[0].reject ? last.messages[0].reject->text : "", reject);
    }
    EXPECT_EQ(ask("SELECT count(*) FROM kel_rejected;"), "3\n");
}

// Of a key that comes again in a batch the last change counts, whichever statements bring them.
TEST_P(Sinks, ChangesOfABatchKeepTheirOrder) {
    const auto sink = open();
    EXPECT_EQ(
        keep(*sink, {row("1", 'p', "A", 1), row("2", 's', "A", 1), row("3", 'p', "B", 2), row("4", 'p', "A", 3), row("5", 's', "B", 2)}),
        "5 0 0");
    EXPECT_EQ(ask(kAll), "A|3|~\n");
    EXPECT_EQ(
        keep(*sink, {row("6", 'd', "A", 0), row("7", 'i', "A", 4), row("8", 'u', "A", 5), row("9", 'i', "A", 6), row("10", 'p', "B", 7)}),
        "4 1 0");
    EXPECT_EQ(ask(kAll), "A|5|~\nB|7|~\n");
}

// A row that is refused takes no other with it, be it among upserts or in a mixed batch, and however many.
TEST_P(Sinks, ARefusedRowIsKeptAsAReject) {
    ask("CREATE TABLE \"Trades\" (\"Symbol\" TEXT PRIMARY KEY, \"Shares\" INTEGER NOT NULL CHECK (\"Shares\" < 100), \"Price\" DOUBLE "
        "PRECISION);");
    const auto sink = open();
    testing::internal::CaptureStderr();
    EXPECT_EQ(keep(*sink, {row("1", 'p', "A", 1), row("2", 'p', "B", 100), row("3", 'p', "C", 3)}), "2 1 0");
    EXPECT_EQ(keep(*sink, {row("4", 'i', "D", 4), {"5", 'p', {text("E"), Value(), 1.0}}, row("6", 'u', "D", 5)}), "2 1 0");
    std::vector<Sent> many;
    for (int i = 0; i < 20; ++i)
        many.push_back({"m" + std::to_string(i), 'i', {text(("S" + std::to_string(i)).c_str()), number(90 + i), Value()}});
    EXPECT_EQ(keep(*sink, many), "10 10 0");
    EXPECT_EQ(keep(*sink, {{"7", 'p', {Value(), number(1), 1.0}}, row("8", 'p', "A\xC0\x80", 1)}), "0 2 0");
    EXPECT_EQ(ask("SELECT count(*), sum(\"Shares\") FROM \"Trades\" WHERE \"Symbol\" <> 'D';"), "12|949\n");
    const std::string said = errors();
    EXPECT_NE(said.find("Message 2 was kept in kel_rejected (id 1): upsert: "), std::string::npos) << said;
    EXPECT_NE(said.find("the key column \"Symbol\" is null."), std::string::npos) << said;
    EXPECT_EQ(ask("SELECT id, source, message_id, stage, key, column_name, format, replayed_at FROM kel_rejected WHERE message_id = '5';"),
              isPostgres() ? "2|trades|5|sink|23502|Shares|text|~\n" : "2|trades|5|sink|1299|Shares|text|~\n");
}

// What SQLite does not take back by itself, and what a table does without a word.
TEST_P(Sinks, AFailedRowLeavesNothingAndReplacesNothing) {
    if (isPostgres()) GTEST_SKIP() << "PostgreSQL has neither";
    ask("CREATE TABLE \"Trades\" (\"Symbol\" TEXT PRIMARY KEY, \"Shares\" INTEGER UNIQUE ON CONFLICT REPLACE, \"Price\" REAL);"
        "CREATE TRIGGER t AFTER INSERT ON \"Trades\" WHEN NEW.\"Shares\" = 13 BEGIN SELECT RAISE(FAIL, 'thirteen'); END;");
    const auto sink = open();
    EXPECT_EQ(keep(*sink, {row("1", 'i', "A", 1), row("2", 'i', "B", 13), row("3", 'i', "C", 3), row("4", 'i', "D", 1)}), "2 2 0");
    EXPECT_EQ(ask("SELECT \"Symbol\", \"Shares\" FROM \"Trades\" ORDER BY 1;"), "A|1\nC|3\n");
}

// A constraint that is checked at the commit names no row.
TEST_P(Sinks, ADeferredConstraintFindsItsRow) {
    ask("CREATE TABLE \"Trades\" (\"Symbol\" TEXT PRIMARY KEY, \"Shares\" INTEGER UNIQUE, \"Price\" DOUBLE PRECISION REFERENCES \"P\""
        " DEFERRABLE INITIALLY DEFERRED); CREATE TABLE \"P\" (p DOUBLE PRECISION PRIMARY KEY); INSERT INTO \"P\" VALUES (1);");
    if (isPostgres()) {
        ask("CREATE TABLE \"P\" (p DOUBLE PRECISION PRIMARY KEY); INSERT INTO \"P\" VALUES (1);"
            "CREATE TABLE \"Trades\" (\"Symbol\" TEXT PRIMARY KEY, \"Shares\" INTEGER, \"Price\" DOUBLE PRECISION REFERENCES \"P\""
            " DEFERRABLE INITIALLY DEFERRED);");
    }
    const auto sink = open();
    EXPECT_EQ(
        keep(*sink,
             {{"1", 'i', {text("A"), number(1), 1.0}}, {"2", 'i', {text("B"), number(2), 2.0}}, {"3", 'i', {text("C"), number(3), 1.0}}}),
        "2 1 0");
    EXPECT_EQ(ask(kAll), isPostgres() ? "A|1|1\nC|3|1\n" : "A|1|1.0\nC|3|1.0\n");
    EXPECT_EQ(ask("SELECT message_id, key FROM kel_rejected;"), isPostgres() ? "2|23503\n" : "2|787\n");
}

TEST_P(Sinks, AppendKeepsEveryRow) {
    settings.mode = SinkMode::kAppend;
    const auto sink = open();
    EXPECT_EQ(keep(*sink, {row("1", 'p', "A", 1), row("2", 'd', "A", 1), {"3", 'i', {Value(), Value(), Value()}}}), "3 0 0");
    EXPECT_EQ(keep(*sink, {row("4", 's', "A", 1)}), "1 0 0");
    EXPECT_EQ(
        ask("SELECT \"Symbol\", \"Shares\", kel_op, kel_seq, kel_message_id, kel_at IS NULL FROM \"Trades\" ORDER BY kel_message_id;"),
        isPostgres() ? "A|1|p|1|1|f\nA|1|d|2|2|f\n~|~|i|3|3|f\nA|1|s|1|4|f\n" : "A|1|p|1|1|0\nA|1|d|2|2|0\n~|~|i|3|3|0\nA|1|s|1|4|0\n");
}

// Known are the messages of the last batch, and earlier ones that the provider did not confirm; of others nobody says that they
// come again.
TEST_P(Sinks, WhatWasKeptIsLeftOut) {
    auto sink = open();
    EXPECT_EQ(keep(*sink, {row("1", 'i', "A", 1), row("1", 'i', "A", 1), {"2", 'i', {}, "bad"}, {"3"}}, false), "1 1 1");
    EXPECT_EQ(keep(*sink, {row("4", 'i', "B", 1)}), "1 0 0");
    EXPECT_EQ(keep(*sink, {row("3", 'i', "C", 1), row("1", 'i', "A", 1), {"2", 'i', {}, "bad"}, row("5", 'i', "D", 1)}), "1 0 3");
    sink.reset();
    sink = open();
    EXPECT_EQ(keep(*sink, {row("5", 'i', "D", 1), row("1", 'i', "A", 1), row("6", 'i', "E", 1)}), "1 0 2") << "after a start";
    EXPECT_EQ(ask("SELECT count(*) FROM \"Trades\"; SELECT count(*) FROM kel_rejected;"), "4\n1\n");
    sink.reset();
    settings.ledgerHours = 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    sink = open();
    EXPECT_EQ(keep(*sink, {row("3", 'p', "Z", 1)}), "1 0 0") << "IDs age";
    EXPECT_EQ(failureOf([&] { keep(*sink, {row("", 'p', "Z", 1)}); }),
              "The provider gives no message IDs (they are disabled at the sender); exactly once needs them.");
}

// A batch of repeats says nothing of the batch before it, and what came again may come once more.
TEST_P(Sinks, ARepeatedBatchConfirmsNoOther) {
    auto sink = open();
    EXPECT_EQ(keep(*sink, {row("a1", 'i', "A", 1), row("a2", 'i', "B", 1), row("a3", 'i', "C", 1)}, false), "3 0 0");
    EXPECT_EQ(keep(*sink, {row("a1", 'i', "A", 1)}), "0 0 1");
    EXPECT_EQ(keep(*sink, {row("b1", 'i', "D", 1)}), "1 0 0");
    EXPECT_EQ(keep(*sink, {row("a2", 'i', "B", 1), row("a3", 'i', "C", 1)}), "0 0 2");
    sink.reset();
    ask(isPostgres() ? "UPDATE kel_ledger SET old = '{\"1000000000 x\",\"1000000001 a2\"}';"
                     : "UPDATE kel_ledger SET old = '1000000000 x' || char(10) || '1000000001 a2' || char(10);");
    settings.ledgerHours = 876000;
    sink = open();
    EXPECT_EQ(keep(*sink, {row("a2", 'i', "B", 1), row("a2", 'i', "B", 1)}), "0 0 2");
    EXPECT_EQ(keep(*sink, {row("c1", 'i', "E", 1)}), "1 0 0");
    const std::string old = ask("SELECT old FROM kel_ledger;");
    EXPECT_NE(old.find("1000000000 x"), std::string::npos) << old;
    EXPECT_EQ(old.find("1000000001"), std::string::npos) << "it got a new time: " << old;
    EXPECT_EQ(old.find(" a2"), old.rfind(" a2")) << old;
}

TEST_P(Sinks, RejectsMayStopTheRun) {
    settings.keepsRejects = false;
    const auto sink = open();
    EXPECT_EQ(failureOf([&] {
                  keep(*sink, {row("1", 'p', "A", 1), row("2", 'u', "B", 1)});
              }),
              "Message 2 was rejected: update: there is no row with the key Symbol = \"B\". sink.rejects is \"stop\": nothing of its batch "
              "was kept.");
    EXPECT_EQ(ask(kAll), "");
    EXPECT_EQ(keep(*sink, {row("1", 'p', "A", 1)}), "1 0 0") << "it is not known as kept";
}

// A kept reject becomes a row once, whether its message is sent again or its row is written by a command.
TEST_P(Sinks, ARejectIsReplayedOnce) {
    const auto sink = open();
    keep(*sink, {row("1", 'u', "A", 1), {"2", 'i', {}, "bad \xFF\n\x01"}, row("3", 'u', "C", 3)});
    host::RejectStore store(settings, *type);
    const auto kept = store.load(2);
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->reject.text, "bad \xEF\xBF\xBD\\n\\x01");
    EXPECT_EQ(*kept->message.body, "body of 2\xFF");
    EXPECT_EQ(kept->message.envelope.at(0).value, "a \"b\"");
    EXPECT_EQ(kept->reject.stage, host::Stage::kParse);
    const auto replay = [&](std::int64_t id, char op) {
        auto made = std::make_unique<host::ServerRow>(host::ServerRow{type.get(), "Trades", op, 1, {text("A"), number(id), Value()}});
        return store.replay(id, std::move(made));
    };
    EXPECT_EQ(replay(1, 'u').replay, host::RejectStore::Replay::kRefused);
    EXPECT_EQ(replay(1, 'i').replay, host::RejectStore::Replay::kDone);
    EXPECT_EQ(replay(1, 'u').replay, host::RejectStore::Replay::kBefore);
    EXPECT_EQ(replay(9, 'u').replay, host::RejectStore::Replay::kBefore);
    Sent again = row("4", 'p', "B", 2), twice = row("5", 'p', "B", 99), bad = row("6", 'u', "X", 3);
    again.replayOf = twice.replayOf = "2@trades@2";
    bad.replayOf = "3@trades@3";
    EXPECT_EQ(keep(*sink, {again, row("7", 'p', "D", 4), bad}), "2 1 0");
    EXPECT_EQ(keep(*sink, {twice}), "0 0 1");
    EXPECT_EQ(ask("SELECT \"Symbol\", \"Shares\" FROM \"Trades\" ORDER BY 1;"), "A|1\nB|2\nD|4\n");
    EXPECT_EQ(store.list(false, 10).size(), 1U);
    ASSERT_EQ(store.list(true, 10).size(), 4U);
    EXPECT_EQ(store.list(true, 1)[0].messageId, "6");
    // Marks of another source, of a reject that is gone, and of one whose number another message has now.
    for (const char* mark : {"4@others@6", "9@trades@6", "4@trades@old", "4@trades"}) {
        Sent unknown = row(mark, 'p', "E", 5);
        unknown.replayOf = mark;
        EXPECT_EQ(keep(*sink, {unknown}), "1 0 0") << mark;
    }
    EXPECT_EQ(store.list(false, 10).size(), 1U) << "none of them marked it";
}

// A constraint that is checked at the commit gives the reject its reason, and the next one its turn.
TEST_P(Sinks, AReplayIsRefusedByADeferredConstraint) {
    ask("CREATE TABLE \"P\" (p DOUBLE PRECISION PRIMARY KEY);"
        "CREATE TABLE \"Trades\" (\"Symbol\" TEXT PRIMARY KEY, \"Shares\" INTEGER, \"Price\" DOUBLE PRECISION REFERENCES \"P\""
        " DEFERRABLE INITIALLY DEFERRED);");
    keep(*open(), {{"1", 'i', {}, "bad"}});
    host::RejectStore store(settings, *type);
    const auto outcome =
        store.replay(1, std::make_unique<host::ServerRow>(host::ServerRow{type.get(), "Trades", 'i', 1, {text("A"), number(1), 2.0}}));
    EXPECT_EQ(outcome.replay, host::RejectStore::Replay::kRefused);
    EXPECT_EQ(store.load(1)->reject.key, isPostgres() ? "23503" : "787");
    EXPECT_EQ(store.list(false, 9).size(), 1U);
    EXPECT_EQ(ask(kAll), "");
}

}  // namespace
}  // namespace database
