// Rows into a database, columns from headers, and who settles: what a configuration says of them, each fault's sentence, and what
// the connector and the provider are then told.
#include <cstdlib>

#include "host/configuration/InForce.h"
#include "host/configuration/Rules.h"
#include "host/process/Provider.h"
#include "tests/host/ConfigurationFixture.h"

namespace {

constexpr char kActiveMq[] = "connection.jndiContextFactory=org.apache.activemq.jndi.ActiveMQInitialContextFactory";
const std::string kSink = "sink.url=sqlite:t.db";
const std::string kGood =
    std::string(kStream) +
    "[connection]\ndataFormat = \"XML\"\nconnectionFactory = \"C\"\njndiContextFactory = \"F\"\njndiURL = \"tcp://h:1\"\n"
    "destinationType = \"QUEUE\"\ndestinationName = \"D\"\n";
const Texts kDurable = {"connection.destinationType=TOPIC", "connection.subscriptionMode=DURABLE", "connection.clientID=c",
                        "connection.subscriptionName=s"};

Texts operator+(Texts one, const Texts& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

class SinkConfiguration : public Configuration {
protected:
    // Every sentence begins as expected.
    static void compare(const Texts& found, const Texts& expected, const std::string& row) {
        ASSERT_EQ(found.size(), expected.size()) << row << ": " << testing::PrintToString(found);
        for (size_t i = 0; i < found.size(); ++i) EXPECT_TRUE(found[i].starts_with(expected[i])) << row << ": " << found[i];
    }
};

TEST_F(SinkConfiguration, IsReadWithDefaults) {
    const host::Settings all = read(std::string(kStream) + R"([sink]
url = "sqlite:t.db"
schema = "s"
table = "T"
mode = "append"
source = "o"
create = false
commitMillis = 1
rejects = "stop"
retrySeconds = 0
statementTimeoutMillis = 2
lockTimeoutMillis = 3
ledgerHours = 4
leaseSeconds = 5
[host]
selector = "A = '😀'"
prefetch = 6
settle = "server"
rejects = "r.jsonl"
)");
    EXPECT_EQ(problems, Texts());
    const host::SinkSettings& sink = all.sink;
    EXPECT_EQ((Texts{sink.url, sink.schema, sink.table, sink.source, all.selector, all.rejects}),
              (Texts{"sqlite:" + testing::TempDir() + "t.db", "s", "T", "o", "A = '😀'", testing::TempDir() + "r.jsonl"}));
    EXPECT_EQ((std::vector<std::int64_t>{sink.commitMillis, sink.retrySeconds, sink.statementTimeoutMillis, sink.lockTimeoutMillis,
                                         sink.ledgerHours, sink.leaseSeconds, all.prefetch}),
              (std::vector<std::int64_t>{1, 0, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(sink.mode == host::SinkMode::kAppend && !sink.create && !sink.keepsRejects && all.serverSettles);

    const host::SinkSettings absent = read(kGood, {kSink, "host.selector=x"}).sink;
    EXPECT_EQ((Texts{absent.url, absent.table, absent.source}), (Texts{"sqlite:t.db", "S", "D"})) << "no place in the file: no folder";
    EXPECT_TRUE(absent.mode == host::SinkMode::kApply && absent.create && absent.keepsRejects);
    EXPECT_EQ(read(kGood, kDurable).sink.source, "c/s");
    EXPECT_EQ(read(kGood, {"sink.url=postgresql://h/d", "stream.columns=[{name='A',type='long'}]"}).sink.mode, host::SinkMode::kAppend);
}

TEST_F(SinkConfiguration, EveryFaultIsASentence) {
    const std::pair<std::string, std::string> rows[] = {
        {"sink.mode=upsert", R"(sink.mode is the text "upsert"; allowed are "apply" and "append".)"},
        {"sink.rejects=drop", R"(sink.rejects is the text "drop"; allowed are "keep" and "stop".)"},
        {"host.settle=plugin", R"(host.settle is the text "plugin"; allowed are "host" and "server".)"},
        {"sink.create=2", "sink.create is the integer 2; allowed is true, false, 1 or 0 without quotes."},
        {"sink.commitMillis=0", "sink.commitMillis is the integer 0; allowed is an integer from 1 to 2147483647."},
        {"sink.retrySeconds=-1", "sink.retrySeconds is the integer -1; allowed is an integer from 0 to 2147483647."},
        {"sink.ledgerHours=87601", "sink.ledgerHours is the integer 87601; allowed is an integer from 1 to 87600."},
        {"host.prefetch=32768", "host.prefetch is the integer 32768; allowed is an integer from 1 to 32767."},
        {"sink.leaseSeconds=soon", "sink.leaseSeconds is the text \"soon\"; allowed is an integer from 1 to 86400."},
        {"sink.tabel=x", "there is no key sink.tabel; the nearest known one is sink.table."},
    };
    for (const auto& [override, problem] : rows) EXPECT_EQ(faults("", {kSink, override}), Texts{"--set: " + problem});
    EXPECT_EQ(faults("[sink]\nurl = 1\n"), Texts{"5: sink.url is the integer 1; allowed is a text in quotes."});
    EXPECT_EQ(faults("[sink]\n"), Texts{" the section [sink] has no url; it needs one, as in url = \"sqlite:trades.db\"."});
}

TEST_F(SinkConfiguration, ColumnsComeFromHeaders) {
    const host::Settings settings = read(R"([stream]
name = "S"
columns = [{ name = "id", type = "string", from = "JMSMessageID", key = true }, { name = "A", type = "long" },
  { name = "p", type = "money", from = "property.Desk" }, { name = "at", type = "int64", from = "JMSTimestamp" }, { name = "B", type = "date" }]
)");
    EXPECT_EQ(problems, Texts());
    std::string names, sources;
    for (const host::Column& column : settings.columns) names += column.name + ' ';
    for (const host::EnvelopeColumn& column : settings.envelope) sources += std::to_string(column.position) + column.from + ' ';
    for (const host::Column& column : host::streamColumns(settings)) names += column.name + ' ';
    EXPECT_EQ(names, "A B id A p at B ");
    EXPECT_EQ(sources, "0JMSMessageID 2property.Desk 3JMSTimestamp ");
    EXPECT_EQ(settings.sink.mode, host::SinkMode::kApply) << "its key is a header";

    const auto faultsOf = [this](const std::string& column) {
        read("stream = { name = \"S\", columns = [{ name = \"A\", type = \"long\" }, { name = \"c\", " + column + " }] }\n");
        return problems;
    };
    for (const char* good : {"'long', from='JMSExpiration'", "'bigdatetime', from='JMSTimestamp'", "'date', from='JMSTimestamp'",
                             "'timestamp', from='JMSTimestamp'", "'string', from='JMSTimestamp'", "'boolean', from='JMSRedelivered'",
                             "'int16', from='JMSPriority'", "'integer', from='JMSDeliveryMode'", "'string', from='JMSReplyTo'",
                             "'string', from='JMSDestination'", "'string', from='JMSType'", "'string', from='JMSCorrelationID'",
                             "'binary', from='property.JMSXGroupID'"})
        EXPECT_EQ(faultsOf(std::string("type=") + good), Texts()) << good;
    const std::pair<const char*, std::string> bad[] = {
        {"type='time', from='JMSTimestamp'",
         "has the type time, which JMSTimestamp does not fill; allowed are long, timestamp, bigdatetime, date, string."},
        {"type='long', from='JMSMessageID'", "has the type long, which JMSMessageID does not fill; allowed is string."},
        {"type='long', from='JMSRedelivered'", "has the type long, which JMSRedelivered does not fill; allowed are boolean, string."},
        {"type='string', from='jmsPriority'",
         "is from \"jmsPriority\", which is no header; the nearest one is JMSPriority, and a property is written property.NAME."},
        {"type='string', from='property.'", "is from \"property.\", which names none; it is written property.NAME."},
    };
    for (const auto& [column, problem] : bad) EXPECT_EQ(faultsOf(column), Texts{file + ":1: column \"c\" " + problem});
    EXPECT_EQ(faultsOf("type='long', from=1"), Texts{file + ":1: from of column \"c\" is the integer 1; allowed is a text in quotes."});
    read("stream = { name = 'S', columns = [{ name = 'c', type = 'string', from = 'JMSType' }] }\n");
    EXPECT_EQ(problems, Texts{file + ": all columns of the section [stream] say from; a message must have at least one field of its own."});
}

TEST_F(SinkConfiguration, CheckNamesWhatDoesNotGoTogether) {
    const std::string longName(64, 'n');
    const auto columns = [](const std::string& one, const std::string& other) {
        return "stream.columns=[{name='" + one + "',type='long'},{name='" + other + "',type='long'}]";
    };
    const std::string postgres = "sink.url=postgresql://h/d",
                      header = "stream.columns=[{name='A',type='long'},{name='i',type='string',from='JMSType'}]";
    const std::pair<Texts, Texts> rows[] = {
        {{kSink}, {}},
        {{postgres, columns("a", "A")}, {}},
        {{"sink.url=postgres://h/d"}, {}},
        {{"sink.url=mysql://u:p@h"}, {"sink.url is \"mysql://u:p@h\"; allowed are sqlite:FILE, postgresql://"}},
        {{"sink.url=sqlite:"}, {"sink.url is \"sqlite:\"; allowed are"}},
        {{kSink, "sink.mode=apply", columns("a", "b")}, {"sink.mode is \"apply\", which needs key columns; the stream has none."}},
        {{kSink, columns("a", "A")}, {"stream.columns has \"a\" and \"A\", which are one name to SQLite"}},
        {{kSink, columns("a", "KEL_Seq")}, {"stream.columns has \"KEL_Seq\", a column of the sink's own where mode = \"append\""}},
        {{postgres, columns("KEL_SEQ", "kel_at")}, {"stream.columns has \"kel_at\", a column of the sink's own"}},
        {{kSink, "sink.table=Kel_Ledger"}, {"sink.table is \"Kel_Ledger\", a table of the sink's own; it must be another."}},
        {{kSink, columns("a", longName)}, {}},
        {{postgres, "sink.table=" + longName, "sink.schema=" + longName, columns("a", longName)},
         {"sink.schema is \"" + longName + "\", 64 bytes, of which PostgreSQL would keep 63; it must be no longer than that.",
          "sink.table is \"n", "stream.columns has \"n"}},
        {{postgres, "sink.table=" + longName.substr(1)}, {}},
        {{kSink, "stream.columns=[{name=\"b\\u0000\",type='long'}]"}, {"stream.columns has \"b"}},
        {{kSink, "host.rejects=r.jsonl"}, {"host.rejects is there beside a sink"}},
        {{kSink, "connection.batchsize=-1"}, {"connection.batchsize is \"-1\"; it must be the number of messages a commit"}},
        {{"host.settle=server"}, {}},
        {{kSink, "host.settle=server"}, {"host.settle is \"server\", which does not go with the section [sink]; it must be"}},
        {{"host.settle=server", "host.rejects=r.jsonl", header},
         {"host.settle is \"server\", which does not go with columns that say from and host.rejects;"}},
        {{"host.prefetch=5"}, {"host.prefetch is 5, which only a client of ActiveMQ is told"}},
        {{"host.prefetch=5", kActiveMq}, {}},
        {{"host.prefetch=5", kActiveMq, "connection.jndiURL=tcp://h:1?a=b&jms.prefetchPolicy.queuePrefetch=7&c=d"},
         {"host.prefetch is 5, and connection.jndiURL says jms.prefetchPolicy.queuePrefetch=7; only one"}},
        {{"host.jvmOptions=[\"-Dkel.jms.selector=x\"]"}, {"host.jvmOptions has \"-Dkel.jms.selector=x\", which host.selector decides on"}},
        {{"host.selector=A = 'x'"}, {}},
    };
    for (const auto& [overrides, expected] : rows)
        compare(host::checkSettings(read(kGood, overrides)).problems, expected, testing::PrintToString(overrides));
}

TEST_F(SinkConfiguration, CheckNotesWhatIsHardlyMeant) {
    const std::string used = "connection.jndiURL is used as \"", both = "jms.checkForDuplicates=false";
    const std::pair<Texts, Texts> rows[] = {
        {{kSink}, {}},
        {{kSink, "connection.batchsize=201"}, {}},
        {{kSink, "connection.batchsize=200", kActiveMq},
         {used + "tcp://h:1?jms.redeliveryPolicy.maximumRedeliveries=-1&" + both + "\", which says what the sink needs."}},
        {{kSink, "connection.batchsize=201", kActiveMq, "host.prefetch=401"},
         {"connection.batchsize is 201; with a prefetch above 400 a broker of ActiveMQ hands out 200",
          used + "tcp://h:1?jms.redeliveryPolicy.maximumRedeliveries=-1&" + both +
              "&jms.prefetchPolicy.all=401\", which says what the sink needs and host"}},
        {{kSink, "connection.batchsize=201", kActiveMq}, {"connection.batchsize is 201;", used}},
        {{kSink, "connection.batchsize=201", kActiveMq, "host.prefetch=400"}, {used}},
        {{kSink, "connection.batchsize=201", kActiveMq, "connection.jndiURL=tcp://h:1?jms.prefetchPolicy.queuePrefetch=400"}, {used}},
        {{kSink, kActiveMq, "connection.jndiURL=tcp://h:1?jms.redeliveryPolicy.maximumRedeliveries=3&" + both},
         {"connection.jndiURL does not say jms.redeliveryPolicy.maximumRedeliveries=-1"}},
        {{kSink, kActiveMq, "connection.jndiURL=failover:(tcp://h:1)?startupMaxReconnectAttempts=0"},
         {"connection.jndiURL does not say maxReconnectAttempts=0 behind failover:", used}},
        {{kSink, kActiveMq, "connection.jndiURL=failover:(tcp://h:1)?maxReconnectAttempts=0"}, {used}},
        {{kSink, "connection.destinationType=TOPIC"}, {"connection.subscriptionMode is not \"DURABLE\"; each message"}},
        {kDurable + Texts{kSink}, {}},
        {kDurable + Texts{kActiveMq}, {"connection.jndiURL does not say jms.redelivery"}},
        {kDurable + Texts{"host.selector=x"}, {"host.selector belongs to the durable subscription"}},
        {{"connection.batchsize=2"}, {"connection.batchsize is not read unless"}},
    };
    for (const auto& [overrides, expected] : rows)
        compare(host::checkSettings(read(kGood, overrides)).notes, expected, testing::PrintToString(overrides));
}

TEST_F(SinkConfiguration, TheConnectorIsTold) {
    const auto host = [](const char* after, const char* millis = "200") {
        return Texts{"kel.jms.settle=host", std::string("kel.jms.settleAfter=") + after, std::string("kel.jms.settleMillis=") + millis};
    };
    const auto sink = [&](const char* after) {
        Texts options = host(after);
        options.insert(options.begin() + 1, "kel.jms.transacted=true");
        return options;
    };
    const std::pair<Texts, Texts> rows[] = {
        {{}, host("100")},
        {{"connection.batchsize=7"}, host("100")},
        {{"host.selector=A = 'b c'"}, host("100") + Texts{"kel.jms.selector=A = 'b c'"}},
        {{"host.settle=server", "host.selector=x"}, {"kel.jms.selector=x"}},
        {{"sink.commitMillis=9"}, host("100", "9")},
        {kDurable, host("1")},
        {kDurable + Texts{"connection.batchsize=7"}, host("7")},
        {{kSink}, sink("100")},
        {{kSink, "connection.batchsize=7"}, sink("7")},
        {{kSink, "connection.batchsize=99999999999"}, sink("2147483647")},
        {kDurable + Texts{kSink, "connection.batchsize=0"}, sink("100")},
    };
    for (const auto& [overrides, expected] : rows)
        EXPECT_EQ(host::connectorProperties(read(kGood, overrides)), expected) << testing::PrintToString(overrides);
}

// Each form of a URL as the provider's client takes it.
TEST(Provider, OptionsGoWhereTheClientReadsThem) {
    const std::pair<const char*, const char*> rows[] = {
        {"tcp://h:1", "tcp://h:1?k=v"},
        {"tcp://h:1?", "tcp://h:1?k=v"},
        {"ssl://h:1?a=%26b", "ssl://h:1?a=%26b&k=v"},
        {"tcp://h:1?a=b&", "tcp://h:1?a=b&k=v"},
        {"tcp://h:1?kk=1&a=k=2", "tcp://h:1?kk=1&a=k=2&k=v"},
        {"tcp://h:1?k=1", "tcp://h:1?k=1"},
        {"tcp://h:1?a=b&k=&c=d", "tcp://h:1?a=b&k=&c=d"},
        {"failover:(tcp://a:1,tcp://b:2?k=1)", "failover:(tcp://a:1,tcp://b:2?k=1)?k=v"},
        {"failover:(tcp://a:1?a=(b))?c=d", "failover:(tcp://a:1?a=(b))?c=d&k=v"},
        {"failover:(tcp://a:1)?c=d&k=1", "failover:(tcp://a:1)?c=d&k=1"},
        {"failover://(tcp://a:1)", "failover://(tcp://a:1)?k=v"},
        {"failover:tcp://a:1,tcp://b:2?c=d", "failover:(tcp://a:1,tcp://b:2?c=d)?k=v"},
        {"failover://tcp://a:1?k=1", "failover://(tcp://a:1?k=1)?k=v"},
        {"vm://b?broker.persistent=false", "vm://b?broker.persistent=false&k=v"},
        {"vm:(broker:(tcp://h:0)/n?persistent=false)", "vm:(broker:(tcp://h:0)/n?persistent=false)?k=v"},
        {"vm:broker:(tcp://h:0)/n?persistent=false", "vm:(broker:(tcp://h:0)/n?persistent=false)?k=v"},
    };
    for (const auto& [url, expected] : rows) EXPECT_EQ(host::provider::withOption(url, "k", "v"), expected);
}

TEST_F(SinkConfiguration, TheAdapterIsGivenTheUrlInForce) {
    const host::Settings settings = read(kGood, {kActiveMq, "host.prefetch=2", "connection.jndiURL=tcp://h:1?a=😀"});
    const host::Parameters parameters = host::connectionInForce(settings);
    EXPECT_EQ(parameters.at("jndiURL"), "tcp://h:1?a=\xED\xA0\xBD\xED\xB8\x80&jms.sendAcksAsync=false&jms.prefetchPolicy.all=2");
    EXPECT_EQ(parameters.size(), settings.connection.size());
    EXPECT_EQ(host::urlInForce(read(kGood, {kSink, "host.prefetch=2"})), "tcp://h:1") << "another provider";
    EXPECT_FALSE(host::connectionInForce(read(kStream, {kSink, kActiveMq})).contains("jndiURL"));
}

}  // namespace
