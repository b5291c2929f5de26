// The way of a user without a schema: messages wait, discover proposes a stream, run takes every message.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/endtoend/Streams.h"

namespace {

using namespace endtoend;

std::string configuration(const std::string& url, const std::string& format, const std::string& more) {
    return "[host]\njvmOptions = [\"-Dkel.jms.browseMillis=500\"]\naddClassPath = "
           "[\"kel-json-converter.jar\", "
           "\"jackson-core.jar\"]\n[connection]\ndataFormat = \"" +
           format +
           "\"\nconnectionFactory = \"ConnectionFactory\"\njndiContextFactory = "
           "\"org.apache.activemq.jndi.ActiveMQInitialContextFactory\"\njndiURL = \"" +
           url + "\"\ndestinationType = \"QUEUE\"\n" + more;
}

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
     "name = \"plain\"|{ name = \"column_0\", type = \"long\" },|{ name = \"column_1\", type = \"integer\" "
     "},|"
     "{ name = \"column_2\", type = \"string\" },  # not date, which cannot hold \"12\" (sample 2)|"
     "{ name = \"column_3\", type = \"string\" },|{ name = \"column_4\", type = \"float\" },",
     R"("column_0":1,"column_1":7,"column_2":"2024-01-02T03:04:05","column_3":"x","column_4":-12.5)"},
    {"dated", "CSV", "delimiter = \",\"\ndateFormat = \"%m/%d/%Y\"\n", "12/31/2024,1\n1/1/1970 at noon,2\n",
     "{ name = \"column_0\", type = \"date\" },|expectStreamNameOpcode = false", R"("column_1":1)"},
    {"prefixed", "CSV", "delimiter = \",\"\n", "Trades,i,IBM,1\nTrades,u,NOVA\n",
     "# column_0 and column_1 are no columns here|name = \"Trades\"|{ name = \"column_3\", type = "
     "\"integer\" }",
     R"("stream":"Trades","op":"i","seq":0,"row":{"column_2":"IBM","column_3":1})"},
    {"elements", "XML", "", "<Trades Symbol=\"IBM\" Price=\"1.5\" KEL_OPS=\"u\"/>\nno message\n<Trades Price=\"2\" Lot=\"7\"/>\n",
     "name = \"Trades\"|{ name = \"Symbol\", type = \"string\" },|{ name = \"Price\", type = \"float\" },|"
     "{ name = \"Lot\", type = \"string\" },  # of unknown type",
     R"("stream":"Trades","op":"u","seq":0,"row":{"Symbol":"IBM","Price":1.5,"Lot":null})"},
    {"mixed", "XML", "", "<Trades a=\"1\"/>\n<Quotes a=\"12:00:00\"/>\n",
     "name = \"Trades\"|# not time, which cannot hold \"1\"|matchStreamName = false", R"("a":"1")"},
    // Blank in one message, absent in another: the second look finds the lines that count what there is.
    {"orders", "FIX", "fixVersion = \"4.4\"\nfixMessageType = \"D\"\n",
     "8=FIX.4.4\00135=D\00155=IBM\00154=1\001\n8=FIX.4.4\00135=D\00155=A\00158=\00154=\001\n"
     "8=FIX.4.4\00135=D\00155=\00158=abc\001\n",
     "# decided by \"\" (sample 2): no type but string reads it; with integer before it|of 2 values fit: integer 1,|"
     "# decided by \"\" (sample 2): no type but string reads it\n|only blank values make it a string, 1 of 2; without them it is integer",
     R"("Side":"1","Symbol":"IBM","Text":null)"},
    {"arrays", "OBJECTARRAY", "expectStreamNameOpcode = false\n", "[\"7 apples\", null, \"1\"]\n[\"8\", \"b\"]\n",
     "{ name = \"column_0\", type = \"date\" },|{ name = \"column_1\", type = \"string\" },|"
     "{ name = \"column_2\", type = \"integer\" },",
     R"("column_1":null,"column_2":1)"},
    {"converted", "CUSTOM", "converterClassName = \"com.morvex.kel.examples.JsonConverter\"\nconverterParam = \"Symbol,Shares\"\n",
     "{\"stream\": \"Trades\", \"Symbol\": \"IBM\", \"Shares\": 1}\n{\"Symbol\": \"NOVA\", \"Shares\": -7}\n",
     "name = \"Trades\"|{ name = \"column_3\", type = \"integer\" },", R"("column_2":"IBM","column_3":1)"},
};

std::vector<std::string> parts(const std::string& list) {
    std::vector<std::string> all;
    for (size_t at = 0; at <= list.size();) {
        const size_t end = std::min(list.find('|', at), list.size());
        all.push_back(list.substr(at, end - at));
        at = end + 1;
    }
    return all;
}

class Discover : public ::testing::Test {
protected:
    Scratch scratch;

    HostProcess discover(const std::string& config, const std::vector<std::string>& more) const {
        std::vector<std::string> all = {"discover", "--config", config};
        all.insert(all.end(), more.begin(), more.end());
        return {scratch, "discover", all};
    }
};

TEST_F(Discover, ARunTakesEveryMessageThatTheProposalWasMadeOf) {
    const Broker broker(scratch);
    for (const RoundTrip& row : kRoundTrips) {
        SCOPED_TRACE(row.name);
        const std::string more = row.connection + ("destinationName = \"" + std::string(row.name)) + "\"\n";
        const std::string text = configuration(broker.url(), row.format, more);
        const std::string config = scratch.write("c.toml", text);
        const std::string messages = scratch.write("messages", row.messages);
        send(scratch, config, messages);
        HostProcess discovery = discover(config, {"--output", "toml", "--explain"});
        ASSERT_EQ(discovery.wait(), 0) << discovery.errors();
        const std::string proposal = discovery.output();
        for (const std::string& part : parts(row.columns)) EXPECT_NE(proposal.find(part), std::string::npos) << part << "\n" << proposal;

        HostProcess run(scratch, "run", {"run", "--config", scratch.write("pasted.toml", pasted(text, proposal)), "--idle", "0.3"});
        ASSERT_EQ(run.wait(), 0) << run.errors();
        EXPECT_NE(run.output().find(row.firstRow), std::string::npos) << run.output();
        const bool hasNone = std::string(row.messages).find("no message") != std::string::npos;
        EXPECT_NE(run.errors().find(hasNone ? "bad 1" : "bad 0"), std::string::npos) << run.errors();
        EXPECT_EQ(lineCount(scratch.path("run.out")), lineCount(messages) - hasNone);
    }
}

// The answers as they stand, whatever the TOML makes of them; and what is refused.
TEST_F(Discover, FormsAndRefusals) {
    const Broker broker(scratch);
    const std::string config =
        scratch.write("c.toml", configuration(broker.url(), "CSV", "destinationName = \"forms\"\ndelimiter = \";\"\n"));
    send(scratch, config, scratch.write("messages", "1;a\xC3\xA4\n-20;b\n2024-01-02T03:04:05.5;\n"));
    struct Row {
        std::vector<std::string> more;
        int status;
        const char* output;
        const char* error;
    };
    const Row kRows[] = {
        {{"--samples", "2"},
         0,
         "column_0  column_1\ndate      string\n--------  --------\n1         a\xC3\xA4\n-20       b\n",
         "--explain tells, of column_0."},
        {{"--output", "json", "--samples", "1"},
         0,
         "{\n  \"stream\": \"forms\",\n  \"columns\": [\n    {\n      \"name\": \"column_0\",\n      "
         "\"type\": \"date\"\n    },\n    {\n      \"name\": \"column_1\",\n      \"type\": "
         "\"string\"\n    }\n  ],\n  \"samples\": [\n    [\"1\", \"a\xC3\xA4\"]\n  ]\n}\n",
         ""},
        {{"--set", "connection.destinationName=empty"}, 1, "", "No message of \"empty\""},
        {{"--set", "connection.jndiURL=vm://localhost"}, 78, "", "a broker of its own"},
        {{"--samples", "11"}, 2, "", "--samples"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.more[1]);
        HostProcess discovery = discover(config, row.more);
        EXPECT_EQ(discovery.wait(), row.status) << discovery.errors();
        EXPECT_EQ(discovery.output(), row.output);
        EXPECT_NE(discovery.errors().find(row.error), std::string::npos) << discovery.errors();
    }
}

}  // namespace
