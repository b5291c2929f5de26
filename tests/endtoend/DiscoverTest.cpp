// The way of a user without a schema: messages wait, discover proposes a stream, run takes every message.
#include "tests/endtoend/Support.h"

namespace {

using namespace endtoend;

// The proposal behind the configuration; its lines for [connection] go where that section ends.
std::string pasted(const std::string& config, const std::string& proposal) {
    const std::string kSection = "[connection]\n";
    const size_t at = proposal.find(kSection);
    if (at == std::string::npos) return config + proposal;
    return config + proposal.substr(at + kSection.size()) + proposal.substr(0, at);
}

struct RoundTrip {
    const char* name;  // of the queue too
    const char* format;
    const char* connection;
    const char* messages;
    const char* columns;   // what the proposal must have: every line of it
    const char* firstRow;  // of the run
};

const RoundTrip kRoundTrips[] = {
    {"plain", "CSV", "delimiter = \",\"\nexpectStreamNameOpcode = false\n",
     "1,007,2024-01-02T03:04:05,x,-12.5\n9999999999,5,12,,1e300\n-3,+0,13,z,.5\n",
     R"(name = "plain"|{ name = "column_0", type = "long" },|column_1", type = "integer"|column_3", type = "string"|column_4", type = "float"|)"
     R"({ name = "column_2", type = "string" },  # not date, which cannot hold "12" (sample 2))",
     R"("column_0":1,"column_1":7,"column_2":"2024-01-02T03:04:05","column_3":"x","column_4":-12.5)"},
    {"dated", "CSV", "delimiter = \",\"\ndateFormat = \"%m/%d/%Y\"\n", "12/31/2024,1\n1/1/1970 at noon,2\n",
     R"({ name = "column_0", type = "date" },|expectStreamNameOpcode = false)", R"("column_1":1)"},
    {"prefixed", "CSV", "delimiter = \",\"\n", "Trades,i,IBM,1\nTrades,u,NOVA\n",
     R"(# column_0 and column_1 are no columns here|name = "Trades"|{ name = "column_3", type = "integer" })",
     R"("stream":"Trades","op":"i","seq":0,"row":{"column_2":"IBM","column_3":1})"},
    {"elements", "XML", "", "<Trades Symbol=\"IBM\" Price=\"1.5\" KEL_OPS=\"u\"/>\nno message\n<Trades Price=\"2\" Lot=\"7\"/>\n",
     R"(name = "Trades"|Symbol", type = "string"|Price", type = "float"|{ name = "Lot", type = "string" },  # of unknown type)",
     R"("stream":"Trades","op":"u","seq":0,"row":{"Symbol":"IBM","Price":1.5,"Lot":null})"},
    {"mixed", "XML", "", "<Trades a=\"1\"/>\n<Quotes a=\"12:00:00\"/>\n",
     R"(name = "Trades"|# not time, which cannot hold "1"|matchStreamName = false)", R"("a":"1")"},
    // Blank in one message, absent in another: the second look finds the lines that count what there is.
    {"orders", "FIX", "fixVersion = \"4.4\"\nfixMessageType = \"D\"\n",
     "8=FIX.4.4\00135=D\00155=IBM\00154=1\001\n8=FIX.4.4\00135=D\00155=A\00158=\00154=\001\n8=FIX.4.4\00135=D\00155=\00158=abc\001\n",
     R"(# decided by "" (sample 2): no type but string reads it; with integer before it|of 2 values fit: integer 1,|)"
     "# decided by \"\" (sample 2): no type but string reads it\n|only blank values make it a string, 1 of 2; without them it is integer",
     R"("Side":"1","Symbol":"IBM","Text":null)"},
    {"arrays", "OBJECTARRAY", "expectStreamNameOpcode = false\n", "[\"7 apples\", null, \"1\"]\n[\"8\", \"b\"]\n",
     R"(column_0", type = "date"|column_1", type = "string"|column_2", type = "integer")", R"("column_1":null,"column_2":1)"},
    {"converted", "CUSTOM", "converterClassName = \"com.morvex.kel.examples.JsonConverter\"\nconverterParam = \"Symbol,Shares\"\n",
     "{\"stream\": \"Trades\", \"Symbol\": \"IBM\", \"Shares\": 1}\n{\"Symbol\": \"NOVA\", \"Shares\": -7}\n",
     R"(name = "Trades"|{ name = "column_3", type = "integer" },)", R"("column_2":"IBM","column_3":1)"},
};

TEST(Discover, ARunTakesEveryMessageThatTheProposalWasMadeOf) {
    const Scratch scratch;
    const Broker broker(scratch);
    for (const RoundTrip& row : kRoundTrips) {
        SCOPED_TRACE(row.name);
        const std::string text = "[host]\naddClassPath = [\"kel-json-converter.jar\", \"jackson-core.jar\"]\n" + connection(broker.url()) +
                                 "destinationType = \"QUEUE\"\ndestinationName = \"" + row.name + "\"\ndataFormat = \"" + row.format +
                                 "\"\n" + row.connection;
        const std::string config = scratch.write("c.toml", text);
        send(scratch, config, row.messages);
        HostProcess discovery(scratch, {"discover", "--config", config, "--format", "toml", "--explain"});
        ASSERT_EQ(discovery.wait(), 0) << discovery.errors();
        const std::string proposal = discovery.output();
        std::stringstream parts(row.columns);
        for (std::string part; std::getline(parts, part, '|');)
            EXPECT_NE(proposal.find(part), std::string::npos) << part << "\n" << proposal;

        HostProcess run(scratch, {"run", "--config", scratch.write("pasted.toml", pasted(text, proposal)), "--idle", "0.3"});
        ASSERT_EQ(run.wait(), 0) << run.errors();
        EXPECT_NE(run.output().find(row.firstRow), std::string::npos) << run.output();
        const bool hasNone = std::string(row.messages).find("no message") != std::string::npos;
        EXPECT_NE(run.errors().find(hasNone ? "bad 1" : "bad 0"), std::string::npos) << run.errors();
        EXPECT_EQ(lineCount(scratch.path("run.out")), lineCount(scratch.path("messages")) - hasNone);
    }
}

}  // namespace
