// The command line: what its options do, and the exit code of each way to get it wrong.
#include <gtest/gtest.h>

#include "tests/endtoend/Streams.h"

namespace {

using namespace endtoend;

TEST(CommandLine, EachOptionAndExitCode) {
    const Scratch scratch;
    Broker broker(scratch, true);
    const std::string port = broker.url().substr(broker.url().rfind(':') + 1);
    Stream stream;
    stream.url = broker.url();
    const std::string config = scratch.write("c.toml", stream.text());
    const std::string inJvm = std::string("connection.jndiURL=failover:(") + kInJvm + ")";
    const std::string lines = scratch.write("lines", "Trades,i,IBM,1,2.5\nTrades,p,NOVA,,\n");
    const std::string whole = scratch.write("whole", "Trades,u,two\nlines,3,4");
    const std::string table =
        "op  seq       Symbol    Shares    Price\n--  --------  --------  --------  --------\n"
        "u          0  two?lines         3         4\n";
    const std::string csv = "op,seq,Symbol,Shares,Price\n";
    struct {
        std::vector<std::string> arguments;
        int status;
        std::string output;  // all of standard output
        const char* error;   // within standard error
    } const rows[] = {
        {{"send", "--config", config, "--repeat", "2", lines}, 0, "", "sent 4 messages"},
        {{"run", "--config", config, "--rows", "4", "--output", "csv"},
         0,
         csv + "i,0,IBM,1,2.5\np,1,NOVA,,\ni,2,IBM,1,2.5\np,3,NOVA,,\n",
         "good 4"},
        {{"send", "--config", config, "--whole", whole}, 0, "", "sent 1 message in"},
        {{"run", "--config", config, "--rows", "1", "--output", "table"}, 0, table, "good 1"},
        {{"send", "--config", config, "--repeat", "2", "-"}, 2, "", "--repeat needs a file"},
        {{"send", "--config", config, "--set", inJvm, lines}, 78, "", "run --feed FILE"},
        {{"run", "--config", config, "--feed", "/no/feed"}, 1, "", "/no/feed"},
        {{"run", "--config", config, "--rows", "0"}, 2, "", "--rows"},
        {{"run", "--config", config, "--output", "xml"}, 2, "", "--output"},
        {{"wrong"}, 2, "", "subcommand"},
        {{"broker", "--port", port}, 1, "", "Address already in use"},
        {{"broker", "--port", "0", "--data", scratch.path("broker-data")}, 1, "", "is locked by another broker"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.arguments));
        HostProcess host(scratch, "host", row.arguments);
        EXPECT_EQ(host.wait(Seconds(20)), row.status) << host.errors();
        EXPECT_NE(host.errors().find(row.error), std::string::npos) << host.errors();
        EXPECT_EQ(host.output(), row.output);
    }
}

}  // namespace
