// That every message of which no row is made has its reason, whatever its format; and columns from what stands around
// a message.
#include "tests/endtoend/Support.h"

namespace {

using namespace endtoend;

struct Bad {
    std::string message;
    std::string stage;
    std::string reason;
};
struct Format {
    std::string parameters;
    std::vector<Bad> messages;
};

std::string member(const std::string& line, const std::string& name) {
    const std::string key = "\"" + name + "\":\"";
    const size_t begin = line.find(key);
    if (begin == std::string::npos) return "";
    size_t end = begin + key.size();
    while (line[end] != '"') end += line[end] == '\\' ? 2 : 1;
    return line.substr(begin + key.size(), end - begin - key.size());
}

TEST(Rejects, EveryBadMessageHasItsReasonAndIsKept) {
    const Format formats[] = {
        {"dataFormat = \"CSV\"\ndelimiter = \",\"\n",
         {{"Quotes,i,IBM,1,1", "parse", "its first field is \\\"Quotes\\\", but the stream is \\\"Trades\\\"; connection.delimiter"},
          {",i,IBM,1,1", "parse", "begins with an empty stream name"},
          {"Trades", "type", "key column \\\"Symbol\\\" (string) is null"},
          {"Trades,x,IBM,1,1", "type", "the opcode \\\"x\\\" is none"},
          {"Trades,i,IBM,1.5,1", "type", "column \\\"Shares\\\" (integer) cannot hold the text \\\"1.5\\\""},
          {"Trades,i,IBM,1,1,1", "type", "has no column; there are 3"}}},
        {"dataFormat = \"XML\"\n",
         {{"<Quotes Symbol=\"A\"/>", "parse",
           "its element is named \\\"Quotes\\\", but the stream is \\\"Trades\\\"; connection.matchStreamName"},
          {"<Trades>", "parse", "holds no self-closing element"},
          {"<Trades Symbol=A/>", "parse", "there is no attribute"},
          {"<Trades Symbol=\"A\" Side=\"B\"/>", "type", "there is no column \\\"Side\\\""}}},
        {"dataFormat = \"OBJECTARRAY\"\n",
         {{R"(["Quotes","i","A"])", "parse", "its first element is \\\"Quotes\\\", but the stream is"},
          {R"([null,"i","A"])", "parse", "its first element is null"},
          {R"(["Trades","i"])", "receive", "its array has 2 elements, but must have at least 3"}}},
    };
    for (const Format& format : formats) {
        SCOPED_TRACE(format.parameters);
        const Scratch scratch;
        std::string config = trades(kInJvm);
        const std::string csv = "dataFormat = \"CSV\"\ndelimiter = \",\"\n";
        config.replace(config.find(csv), csv.size(), format.parameters);
        std::string feed;
        for (const Bad& bad : format.messages) feed += bad.message + '\n';
        const std::string file = scratch.path("rejects.jsonl");
        HostProcess host(scratch, {"run", "--config", scratch.write("c.toml", config + "[host]\nrejects = \"rejects.jsonl\"\n"), "--feed",
                                   scratch.write("feed", feed), "--max-bad", std::to_string(format.messages.size())});
        EXPECT_EQ(host.wait(), 1) << host.errors();
        EXPECT_EQ(host.output(), "");
        std::stringstream lines(read(file));
        std::string line;
        for (const Bad& bad : format.messages) {
            ASSERT_TRUE(std::getline(lines, line)) << bad.message;
            EXPECT_EQ(member(line, "stage"), bad.stage) << line;
            EXPECT_NE(member(line, "error").find(bad.reason), std::string::npos) << line;
            EXPECT_NE(host.errors().find(member(line, "message") + " was kept in " + file), std::string::npos) << host.errors();
        }
        EXPECT_FALSE(std::getline(lines, line)) << line;
    }
}

TEST(Rejects, AnyNumberIsReplayedOnceUnderTodaysConfiguration) {
    constexpr int kCount = 60;
    const Scratch scratch;
    std::string config = trades(kInJvm) + "[host]\nrejects = \"rejects.jsonl\"\n";
    std::string feed;
    for (int i = 0; i < kCount; ++i) feed += "Trades,i,K" + std::to_string(i) + ",many,1\n";
    HostProcess host(scratch, {"run", "--config", scratch.write("c.toml", config), "--feed", scratch.write("feed", feed), "--idle", "0.5"});
    ASSERT_EQ(host.wait(), 0) << host.errors();
    const std::string type = "\"integer\"";
    scratch.write("c.toml", config.replace(config.find(type), type.size(), "\"string\""));
    const std::tuple<const char*, const char*, int> replays[] = {{"all", "replayed 60, replayed before 0, stay 0", kCount},
                                                                 {"all", "no reject to replay", 0},
                                                                 {"7", "replayed 0, replayed before 1", 0}};
    for (const auto& [which, said, rows] : replays) {
        HostProcess replay(scratch, {"rejects", "--config", scratch.path("c.toml"), "--replay", which});
        EXPECT_EQ(replay.wait(Seconds(30)), 0) << replay.errors();
        EXPECT_NE(replay.errors().find(said), std::string::npos) << replay.errors();
        const std::string output = replay.output();
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), rows);
    }
}

// A wrong header is found before anything starts.
TEST(Rejects, ColumnsFromHeadersStandAnywhereAndAreNoFields) {
    const Scratch scratch;
    std::string config = trades(kInJvm);
    config.replace(
        config.find("{ name = \"Symbol\""), 0,
        "{ name = \"id\", type = \"string\", from = \"JMSMessageID\" }, { name = \"sent\", type = \"long\", from = \"JMSTimestamp\" }, ");
    config.replace(config.find(" ]\n"), 0,
                   ", { name = \"again\", type = \"boolean\", from = \"JMSRedelivered\" }, { name = \"region\", type = \"string\", from = "
                   "\"property.region\" }");
    const auto before = std::chrono::system_clock::now();
    HostProcess host(scratch, {"run", "--config", scratch.write("c.toml", config), "--feed",
                               scratch.write("feed", "Trades,i,A,1,2.5\nTrades,i,B,2,3\n"), "--rows", "2"});
    ASSERT_EQ(host.wait(), 0) << host.errors();
    std::stringstream rows(host.output());
    for (const char* rest : {R"("Symbol":"A","Shares":1,"Price":2.5,"again":false,"region":null}})",
                             R"("Symbol":"B","Shares":2,"Price":3,"again":false,"region":null}})"}) {
        std::string row;
        std::getline(rows, row);
        EXPECT_TRUE(member(row, "id").starts_with("ID:")) << row;
        EXPECT_TRUE(row.ends_with(rest)) << row;
        const std::chrono::milliseconds sent(std::atoll(row.c_str() + row.find("\"sent\":") + 7));
        EXPECT_LT(std::chrono::abs(before.time_since_epoch() - sent), std::chrono::minutes(1)) << row;
    }
    HostProcess narrow(scratch, {"run", "--config", scratch.path("c.toml"), "--feed", scratch.path("feed"), "--idle", "0.5", "--set",
                                 "host.selector=JMSPriority > 4"});
    ASSERT_EQ(narrow.wait(), 0) << narrow.errors();
    EXPECT_EQ(narrow.output(), "") << "none is so urgent";
}

}  // namespace
