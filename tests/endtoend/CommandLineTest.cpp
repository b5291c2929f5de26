// The command line: what its options do, and the sentence and exit code of each way to get it wrong.
#include <sys/stat.h>

#include "tests/endtoend/Support.h"

namespace {

using namespace endtoend;

constexpr char kLines[] = "Trades,i,IBM,1,2.5\nTrades,p,NOVA,,\n";
constexpr char kCsv[] = "op,seq,Symbol,Shares,Price\ni,0,IBM,1,2.5\np,1,NOVA,,\ni,2,IBM,1,2.5\np,3,NOVA,,\n";
constexpr char kTable[] =
    "op  seq       Symbol    Shares    Price\n--  --------  --------  --------  --------\n"
    "u          0  two\\nlines         3         4\n";
// The answers of discovery as they stand, whatever its TOML makes of them.
constexpr char kSamples[] = "column_0  column_1\ndate      string\n--------  --------\n1         a\xC3\xA4\n-20       b\n";
constexpr char kJson[] =
    "{\n  \"stream\": \"forms\",\n  \"columns\": [\n    {\n      \"name\": \"column_0\",\n      \"type\": \"date\"\n    },\n    "
    "{\n      \"name\": \"column_1\",\n      \"type\": \"string\"\n    }\n  ],\n  \"samples\": [\n    [\"1\", \"a\xC3\xA4\"]\n  ]\n}\n";

TEST(CommandLine, EachOptionAndExitCode) {
    const Scratch scratch;
    const Broker broker(scratch, true);
    const std::string config = scratch.write("c.toml", trades(broker.url()));
    const std::string forms =
        scratch.write("f.toml", connection(broker.url()) +
                                    "dataFormat = \"CSV\"\ndelimiter = \";\"\ndestinationType = \"QUEUE\"\ndestinationName = \"forms\"\n");
    send(scratch, forms, "1;a\xC3\xA4\n-20;b\n2024-01-02T03:04:05.5;\n");
    const std::string lines = scratch.write("lines", kLines);
    const std::string whole = scratch.write("whole", "Trades,u,two\nlines,3,4");
    const std::string masked =
        config + ": host.jvmOptions has \"-Dkel.jms.browseLimit=password=***\"; the value must be an integer from 1 to 2147483647.\n";
    // Configuration, arguments, exit code, all of standard output, a text within standard error.
    const std::tuple<const std::string*, Texts, int, const char*, const char*> rows[] = {
        {&config, {"send", "--repeat", "2", lines}, 0, "", "sent 4 messages"},
        {&config, {"run", "--rows", "4", "--format", "csv"}, 0, kCsv, "good 4"},
        {&config, {"send", "--whole", whole}, 0, "", "sent 1 message in"},
        {&config, {"run", "--rows", "1", "--output", "table"}, 0, kTable, "good 1"},
        {&config, {"send", "--repeat", "2", "-"}, 2, "", "--repeat needs a file"},
        {&config, {"send", "--set", std::string("connection.jndiURL=failover:(") + kInJvm + ")", lines}, 78, "", "run --feed FILE"},
        {&config,
         {"send", "--set", "connection.jndiURL=vm://a?jms.password=secret", lines},
         78,
         "",
         "\"vm://a?jms.password=***\", a broker"},
        {&config, {"check", "--set", "host.jvmOptions=[\"-Dkel.jms.browseLimit=password=secret\"]"}, 78, masked.c_str(), ""},
        {&config, {"run", "--sett", "connection.jndiURL=tcp://h?jms.password=secret"}, 2, "", "jms.password=***"},
        {&config, {"run", "--feed", "/no/feed"}, 1, "", "/no/feed"},
        {&config, {"run", "--rows", "0"}, 2, "", "--rows: \"0\" is no integer above 0."},
        {&config, {"run", "--rows", "1.5"}, 2, "", "--rows: \"1.5\" is no integer above 0."},
        {&config, {"run", "--format", "xml"}, 2, "", "\"xml\" is no form; the forms are jsonl, csv, table"},
        {&config, {"run", "--set", "connection.jndiURL=tcp://127.0.0.1:1"}, 1, "", "is not reachable"},
        {&config, {"run", "--set", "host.classPath=[\"/no/such.jar\"]"}, 78, "", "/no/such.jar"},
        {&config, {"run", "--set", "host.classPath=[\"geronimo-jms_1.1_spec.jar\"]"}, 1, "", "jndiContextFactory"},
        {&config, {"run", "--set", "connection.delimeter=;"}, 78, "", "connection.delimiter"},
        {&config, {"run", "--set", "connection.dataFormat=CVS"}, 78, "", "CVS"},
        {&config, {"run", "--set", "host.jvmOptions=[\"-Xmx1\"]"}, 1, "", "Too small maximum heap"},
        {&forms, {"discover", "--samples", "2"}, 0, kSamples, "warnings about column_0."},
        {&forms, {"discover", "--format", "json", "--samples", "1"}, 0, kJson, ""},
        {&forms, {"discover", "--set", "connection.destinationName=empty"}, 1, "", "No message of \"empty\""},
        {&forms, {"discover", "--set", "connection.jndiURL=vm://localhost"}, 78, "", "a broker of its own"},
        {&forms, {"discover", "--samples", "11"}, 2, "", "--samples: \"11\" is no integer from 0 to 10."},
        {nullptr, {"wrong"}, 2, "", "A command is required; the commands are run, discover, send, broker, check, rejects."},
        {nullptr, {"check", "--config"}, 2, "", "--config needs a value."},
        {nullptr, {"broker", "--port", broker.port()}, 1, "", "Address already in use"},
        {nullptr, {"broker", "--port", "0", "--data", scratch.path("broker-data")}, 1, "", "is locked by another broker"},
    };
    for (const auto& [file, command, status, output, error] : rows) {
        SCOPED_TRACE(::testing::PrintToString(command));
        Texts arguments = command;
        if (file != nullptr) arguments.insert(arguments.end(), {"--config", *file});
        HostProcess host(scratch, arguments);
        EXPECT_EQ(host.wait(Seconds(20)), status) << host.errors();
        EXPECT_NE(host.errors().find(error), std::string::npos) << host.errors();
        EXPECT_EQ(host.output(), output);
    }
}

// Nothing but rows comes into the row file, and no result is lost without a word.
TEST(CommandLine, StandardDescriptorsThatAreClosedOrFull) {
    const Scratch scratch;
    const std::string config = scratch.write("c.toml", trades(kInJvm));
    const std::string rows = scratch.path("rows");
    const std::string closed = "The output cannot be written to standard output: Bad file descriptor.\n";
    const std::string full = "The output cannot be written to standard output: No space left on device.\n";
    const std::tuple<const char*, Texts, int, std::string> cases[] = {
        {"exec 2>&-", {"run", "--config", config, "--idle", "0.1", "--out", rows}, 0, ""},
        {"exec <&- >&- 2>&-", {"run", "--config", config, "--idle", "0.1", "--out", rows}, 0, ""},
        {"exec >&-", {"run", "--config", config, "--idle", "0.1"}, 1, closed},
        {"exec <&-",
         {"send", "--config", config, "--set", "connection.jndiURL=tcp://127.0.0.1:1"},
         1,
         "standard input cannot be read: Bad file descriptor; it must be a file or pipe with messages.\n"},
        {"exec >/dev/full", {"check", "--config", config}, 1, full},
        {"exec >/dev/full", {"check", "--help"}, 1, full},
        {"exec >/dev/full", {"broker", "--port", "0"}, 1, full},
    };
    for (const auto& [setup, arguments, status, error] : cases) {
        HostProcess host(scratch, arguments, setup);
        EXPECT_EQ(host.wait(Seconds(20)), status) << setup << arguments[0];
        EXPECT_EQ(host.errors(), error);
        EXPECT_EQ(read(rows), "") << setup;
    }
}

TEST(CommandLine, APipeWithNobodyAtItsOtherEndHoldsUpNoStop) {
    const Scratch scratch;
    const std::string pipe = scratch.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    HostProcess check(scratch, {"check", "--config", pipe});
    EXPECT_EQ(check.wait(Seconds(10)), 78);
    EXPECT_EQ(check.output(), pipe + " cannot be read; it must be a regular file with a configuration in TOML.\n");
    HostProcess run(scratch, {"run", "--out", pipe, "--config", scratch.write("c.toml", trades(kInJvm))});
    const std::string waiting = "The pipe " + pipe + " has no reader; the command waits for one.\n";
    EXPECT_TRUE(within(Seconds(10), [&] { return run.errors() == waiting; })) << run.errors();
    run.signal(SIGTERM);
    EXPECT_EQ(run.wait(Seconds(10)), 1);
    EXPECT_EQ(run.errors(), waiting + "The command was stopped before it was ready.\n");
}

TEST(CommandLine, ASecondSignalLeavesAtOnce) {
    const Scratch scratch;
    std::string lines;
    for (int i = 0; i < 2000; ++i) lines += kLines;
    const UnreadPipe pipe;
    HostProcess run(scratch, {"run", "--config", scratch.write("c.toml", trades(kInJvm)), "--feed", scratch.write("lines", lines)},
                    pipe.setup());
    EXPECT_TRUE(within(Seconds(30), [&] { return pipe.isFull(); })) << run.errors();
    run.signal(SIGTERM);
    run.signal(SIGINT);  // as timeout(1) does: the same request
    EXPECT_EQ(run.wait(Seconds(0.5)), -1);
    run.signal(SIGTERM);
    EXPECT_EQ(run.wait(Seconds(10)), 130) << run.errors();
}

}  // namespace
