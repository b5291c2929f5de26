// What discover makes of the entry points' answers: the explanation of a type, and the stream that is proposed.
#include <gtest/gtest.h>

#include "host/discovery/Explanation.h"
#include "host/discovery/Proposal.h"
#include "host/discovery/SecondLook.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"

namespace {

using Texts = std::vector<std::string>;

host::Settings settings(const std::string& format, const std::string& dateFormat = host::kDefaultDateFormat) {
    host::Settings result;
    result.connection = {{"dataFormat", format},
                         {"destinationType", "QUEUE"},
                         {"destinationName", "dynamicQueues/waiting"},
                         {"dateFormat", dateFormat},
                         {"timestampFormat", host::kDefaultDateFormat}};
    return result;
}

Texts split(const std::string& list) {
    Texts all(1);
    for (const char c : list) {
        if (c == '|')
            all.emplace_back();
        else
            all.back() += c;
    }
    return all;
}

TEST(DiscoverExplain, NamesTheDecidingValueAndWhatTheTypeLoses) {
    struct {
        const char* format;
        const char* type;    // the entry points' answer
        const char* values;  // of one column
        size_t sample;       // 0: the library comes to another type
        size_t counted;
        const char* warning;  // the beginning of the only one; "": there is none
        const char* dateFormat = host::kDefaultDateFormat;
    } const rows[] = {
        {"CSV", "float", "1|2.5|3|1e9", 2, 4, ""},
        {"CSV", "long", "2147483648|1", 1, 2, ""},
        {"CSV", "integer", "1|2.5", 0, 0, ""},
        {"CSV", "string", "1||2", 2, 3, "only blank values make it a string, 1 of 3; without them it is integer"},
        {"CSV", "string", "x|", 1, 2, ""},
        {"CSV", "integer", "1|", 0, 0, ""},
        {"CSV", "integer", "0|-0|-07|+00|10", 1, 5, R"("-07" (sample 3) loses its leading zeros as a number; likewise 1 more)"},
        {"CSV", "string", "007|x", 2, 2, ""},
        {"CSV", "float", "1.5|2024-01-02T03:04:05.123", 1, 2, R"("2024-01-02T03:04:05.123" (sample 2) is a date only because the rest,)"},
        {"CSV", "date", "5|2024-01-02T03:04:05", 2, 2, ""},
        {"CSV", "date", "2024-01-02T03:04:05.1", 1, 1, R"("2024-01-02T03:04:05.1" (sample 1) is a date only because the rest, ".1", is)"},
        {"CSV", "timestamp", "2024-01-02T03:04:05.123", 1, 1, "", "%d.%m.%Y"},
        {"CSV", "timestamp", "2024-01-02T03:04:05Z.5", 1, 1, R"("2024-01-02T03:04:05Z.5" (sample 1) is a timestamp)", "%d.%m.%Y"},
        {"CSV", "timestamp", "2024-01-02T03:04:05.1 234 n", 1, 1,
         R"("2024-01-02T03:04:05.1 234 n" (sample 1) is a timestamp only because the rest, "4 n",)", "%d.%m.%Y"},
        {"FIX", "time", "12:00:00 noon", 1, 1, R"("12:00:00 noon" (sample 1) is a time only because the rest, " noon",)"},
        {"OBJECTARRAY", "date", "7 apples|8", 1, 2, R"("7 apples" (sample 1) is a date only because the rest, " apples",)"},
        {"CUSTOM", "date", "10.0.0.1", 1, 1, R"("10.0.0.1" (sample 1) is a date)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.values) + " as " + row.type + " in " + row.format);
        const Texts values = split(row.values);
        host::Discovery found{{"a"}, {row.type}, {}, {}, {}};
        for (const std::string& value : values) found.samples.push_back({value});
        if (row.sample == 0) {
            EXPECT_THROW(host::explain(found, settings(row.format)), host::Failure);
            continue;
        }
        const host::Explanation one = host::explain(found, settings(row.format, row.dateFormat)).at(0);
        EXPECT_EQ(one.sample, row.sample);
        EXPECT_EQ(one.value, values[row.sample - 1]);
        EXPECT_EQ(one.values, row.counted);
        ASSERT_EQ(one.warnings.size(), *row.warning == '\0' ? 0U : 1U);
        for (const std::string& warning : one.warnings) EXPECT_TRUE(warning.starts_with(row.warning)) << warning;
    }
    // Rows of different lengths.
    const host::Discovery found{{"a", "b"}, {"integer", "float"}, {}, {{"1"}, {"2", "7"}, {"3", ".5"}}, {}};
    const host::Explanation second = host::explain(found, settings("CSV")).at(1);
    const std::vector<std::pair<std::string, size_t>> fits = {{"integer", 1},   {"long", 1}, {"float", 2}, {"date", 0},
                                                              {"timestamp", 0}, {"time", 0}, {"string", 2}};
    EXPECT_EQ(second.fits, fits);
    EXPECT_EQ(second.rule, "float is the first type that reads it; with integer before it that makes float");
}

// The samples are "1", "", "" and "2.5"; of the second look's messages some have the column (y), some do not (n), and
// some are other messages (x).
TEST(DiscoverExplain, TellsBlankFromAbsentWhereTheSamplesAreFoundAgain) {
    // A letter for each message, the type, the deciding sample, the values, how the only warning begins.
    const std::tuple<std::string, std::string, size_t, size_t, const char*> rows[] = {
        {"yyyy", "string", 2, 4, "only blank values make it a string, 2 of 4; without them it is float"},
        {"ynyy", "string", 3, 3, "only blank values make it a string, 1 of 3; without them it is float"},
        {"ynny", "float", 4, 2, ""},
        {"ynnn", "float", 4, 2, ""},
        {"yyyx", "float", 4, 2, ""},
        {"ynn", "string", 2, 4, "only blank values make it a string"},
    };
    for (const auto& [letters, type, sample, values, warning] : rows) {
        SCOPED_TRACE(letters);
        host::Discovery found{{"a"}, {type}, {}, {{"1"}, {""}, {""}, {"2.5"}}, {}};
        for (size_t i = 0; i < letters.size(); ++i) {
            found.messages.push_back({"", {{"b", "1"}}});
            if (letters[i] != 'n') found.messages[i].fields.emplace_back("a", letters[i] == 'y' ? found.samples[i][0] : "3");
        }
        const host::Explanation one = host::explain(found, settings("FIX")).at(0);
        EXPECT_EQ(one.sample, sample);
        EXPECT_EQ(one.values, values);
        ASSERT_EQ(one.warnings.size(), *warning == '\0' ? 0U : 1U);
        for (const std::string& text : one.warnings) EXPECT_TRUE(text.starts_with(warning)) << text;
        EXPECT_EQ(host::guessesBlanks(found, settings("FIX")), letters.back() == 'x' || letters.ends_with("nn"));
    }
}

TEST(DiscoverProposal, FindsTheStreamsNameAndWhetherMessagesBringIt) {
    struct {
        const char* format;
        const char* configured;  // the stream's name
        const char* asked;
        std::vector<Texts> samples;
        const char* streamName;
        size_t columns;
        const char* connection;  // the key that [connection] needs
        bool isPrefixed = true;
        std::vector<host::PeekedMessage> messages = {};  // of the second look
    } const rows[] = {
        {"CSV", "", "", {{"Trades", "i", "1"}}, "waiting", 3, "", false},
        {"CSV", "", "", {{"Trades", "i", "1"}, {"Trades", "d"}}, "Trades", 1, ""},
        {"CSV", "", "", {{"Trades", "i", "1"}, {"Quotes", "i", "1"}}, "waiting", 3, "expectStreamNameOpcode"},
        {"CSV", "Quotes", "", {{"Trades", "i", "x"}, {"Quotes", "i", "1"}}, "Quotes", 1, ""},
        {"CSV", "Quotes", "Other", {{"Quotes", "i", "1"}}, "Other", 3, "expectStreamNameOpcode"},
        {"OBJECTARRAY", "", "", {{"Trades", "insert", "1"}}, "waiting", 3, "expectStreamNameOpcode"},
        {"OBJECTARRAY", "", "", {{"1"}}, "waiting", 1, "expectStreamNameOpcode"},
        {"CUSTOM", "", "", {{"", "", "1"}, {"Trades", "i", "1"}}, "Trades", 1, ""},
        {"FIX", "", "Orders", {{"1"}}, "Orders", 1, ""},
        {"XML", "", "", {{"1"}}, "T", 1, "", true, {{"T", {{"column_0", "1"}}}}},
        {"XML", "", "", {{"1"}}, "T", 1, "matchStreamName", true, {{"T", {{"column_0", "2"}, {"b", "1"}}}}},
        {"XML", "", "", {{"1"}}, "waiting", 1, "matchStreamName"},
        {"XML", "T", "", {{"1"}}, "T", 1, ""},
        {"XML", "T", "Q", {{"1"}}, "Q", 1, "matchStreamName", true, {{"T", {{"column_0", "1"}}}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.format) + " " + row.samples[0][0] + " " + row.configured + row.asked);
        host::Settings all = settings(row.format);
        if (!row.isPrefixed) all.connection["expectStreamNameOpcode"] = "0";
        all.streamName = row.configured;
        host::Discovery found;
        for (size_t i = 0; i < row.samples[0].size(); ++i) {
            found.names.push_back("column_" + std::to_string(i));
            found.types.push_back(i < 2 ? "string" : "integer");
        }
        found.samples = row.samples;
        found.messages = row.messages;
        const host::Proposal proposal = host::propose(found, all, row.asked);
        EXPECT_EQ(proposal.streamName, row.streamName);
        EXPECT_EQ(proposal.columns.size(), row.columns);
        EXPECT_EQ(proposal.connection.empty() ? "" : proposal.connection[0].first, row.connection);
        // A text of another stream's message decides nothing.
        EXPECT_EQ(proposal.columns.back().reason, "");
    }
}

}  // namespace
