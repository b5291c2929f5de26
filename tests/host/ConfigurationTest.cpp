// A configuration read: what comes of a good one, and the sentence for each fault of a bad one.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "host/configuration/ConnectorLimits.h"
#include "host/configuration/Rules.h"
#include "host/connection/Plugin.h"
#include "host/process/ClassPath.h"
#include "host/process/Failure.h"
#include "host/process/Provider.h"
#include "host/values/ValueTyping.h"
#include "tests/host/ConfigurationFixture.h"
#include "tests/host/FailureOf.h"

namespace {

TEST_F(Configuration, HandsInWhatItSays) {
    const host::Settings settings = read(std::string(kStream) + R"([connection]
delimiter = "\u0000\U0001F600"
batchsize = 100
expectStreamNameOpcode = true
matchStreamName = 1
dateFormat = ""
)" + "[host]\nlogLevel = 6\nclassPath = \"a.jar:lib/b.jar\"\naddClassPath = [\"/x/c.jar\"]\njvmOptions = [\"-Da=b:c\"]\n",
                                         {"connection.batchsize=5", "connection.expectStreamNameOpcode=0",
                                          "connection.jndiURL=tcp://h:1?a=b", "host.jvmOptions=[\"-Xint\"]", "connection.clientID=12"});
    EXPECT_EQ(problems, Texts());
    EXPECT_EQ(settings.streamName, "S");
    ASSERT_EQ(settings.columns.size(), 2U);
    EXPECT_TRUE(settings.columns[0].key && !settings.columns[1].key);
    EXPECT_EQ(settings.columns[1].type, 2U);
    std::string parameters;
    for (const auto& [name, value] : settings.connection) parameters += name + "=" + value + "|";
    EXPECT_EQ(parameters,
              "batchsize=5|clientID=12|dateFormat=|delimiter=\xC0\x80\xED\xA0\xBD\xED\xB8\x80|expectStreamNameOpcode=0|"
              "jndiURL=tcp://h:1?a=b|matchStreamName=1|timeFormat=%H:%M:%S|timestampFormat=%Y-%m-%dT%H:%M:%S|");
    EXPECT_EQ(settings.logLevel, 6);
    EXPECT_EQ(settings.classPath, (Texts{"a.jar", testing::TempDir() + "lib/b.jar"}));
    EXPECT_EQ(settings.addClassPath, Texts{"/x/c.jar"});
    EXPECT_EQ(settings.jvmOptions, Texts{"-Xint"});
}

TEST_F(Configuration, EveryFaultIsASentence) {
    EXPECT_EQ(faults("[connection]\ndelimeter = 1\nbatchsize = \"ten\"\ndataFormat = 3\nmatchStreamName = \"true\"\n"
                     "logLevel = 1\n[host]\nlogLevel = 8\njvmOptions = [1]\n[conection]\n",
                     {"batchsize=1", "host.logLevel=x", "strem.name=T", "connection.expectStreamNameOpcode=2"}),
              (Texts{"--set batchsize=1: this is not of the form section.name=value.",
                     "--set: connection.expectStreamNameOpcode is the integer 2; allowed is true, false, 1 or 0 without quotes.",
                     "--set: host.logLevel is the text \"x\"; allowed is an integer from 0 (least) to 7 (every step).",
                     "--set: there is no section [strem]; the nearest known one is [stream].",
                     "5: there is no key connection.delimeter; the nearest known one is connection.delimiter.",
                     "6: connection.batchsize is the text \"ten\"; allowed is an integer.",
                     "7: connection.dataFormat is the integer 3; allowed is a text in quotes.",
                     "8: connection.matchStreamName is the text \"true\"; allowed is true, false, 1 or 0 without quotes.",
                     "9: there is no key connection.logLevel; the nearest known one is host.logLevel.",
                     "12: host.jvmOptions is a list; allowed is a list of texts in quotes.",
                     "13: there is no section [conection]; the nearest known one is [connection]."}));
    EXPECT_EQ(faults("x = 1.5\n[host]\nlogLevel = 8\n"),
              (Texts{"4: there is no key stream.x; the nearest known one is stream.name.",
                     "6: host.logLevel is the integer 8; allowed is an integer from 0 (least) to 7 (every step)."}));
    EXPECT_EQ(faults("= 1\n").size(), 1U);
    read("");
    EXPECT_EQ(problems.size(), 2U) << "no name, no columns";
    EXPECT_EQ(host::readSettings(file + ".absent", {}, problems), std::nullopt);
}

// What would exhaust the parser's stack.
TEST_F(Configuration, IsSmallAndFlat) {
    const auto chain = [](int parts, const std::string& dot = ".") {
        std::string key = "a";
        for (int i = 1; i < parts; ++i) key += dot + 'a';
        return key;
    };
    const std::string deep = ": a key has more than 32 parts; a configuration's have two, as in host.logLevel.";
    const std::pair<std::string, const char*> rows[] = {
        {"[" + chain(500'000) + "]", "4"},
        {chain(500'000) + " = 1", "4"},
        {"\n" + chain(33, " .\t") + " = 1", "5"},
        {"x = [\"\"\"\n\\\"\"\"#\"\"\"\", {" + chain(33), "5"},
        {"x = ''' \"\n'''\ny = [ '\\', \"\\\"#\", { " + chain(33) + " = 1 } ]", "6"},
    };
    for (const auto& [text, line] : rows) EXPECT_EQ(faults(text), Texts{line + deep}) << text.substr(0, 100);
    for (const std::string& text : {chain(32) + " = 1", "x = '" + chain(33) + "' # " + chain(33), "x = \"\\\"" + chain(33) + "\"",
                                    "x = \"\"\"\n" + chain(33) + "\"\"\""}) {
        for (const std::string& fault : faults(text)) EXPECT_FALSE(fault.ends_with(deep)) << text;
    }
    EXPECT_EQ(faults("", {"host.classPath={" + chain(33) + "=1}"}), Texts{"--set host.classPath" + deep});
    EXPECT_EQ(faults("", {"connection.jndiURL=" + chain(40)}), Texts());
    read(std::string(1 << 20, '\n'));
    EXPECT_EQ(problems.size(), 2U) << "no name, no columns";
    read(std::string((1 << 20) + 1, '\n'));
    EXPECT_EQ(problems, Texts{file + " is longer than 1048576 bytes, the most that a configuration may have."});
}

TEST_F(Configuration, EveryColumnFaultNamesTheColumn) {
    const std::pair<const char*, std::string> rows[] = {
        {"5", R"(stream.columns is the integer 5; allowed is a list of tables such as { name = "Symbol", type = "string", key = true }.)"},
        {"[{ type = \"long\" }]", "this column has no name; it needs one, as in name = \"Symbol\"."},
        {"[{ name = \"A\", type = \"Long\" }]", "column \"A\" has the unknown type \"Long\"; the types are " + host::typeNames() + "."},
        {"[{ name = \"A\" }]", "column \"A\" has no type; the types are " + host::typeNames() + "."},
        {R"([{ name = "A", type = "long", kye = true }])", "a column has no key kye; the nearest known one is key."},
        {R"([{ name = "A", type = "long", key = 1 }])", "key of column \"A\" is the integer 1; allowed are true and false without quotes."},
        {R"([{ name = "A", type = "long" }, { name = "A", type = "long" }])", "there are two columns \"A\"; every name must be different."},
    };
    for (const auto& [columns, problem] : rows) {
        read("stream = { name = \"S\", columns = " + std::string(columns) + " }\n");
        EXPECT_EQ(problems, Texts{file + ":1: " + problem});
    }
}

TEST(Check, KnowsABrokerInsideTheProcess) {
    for (const char* url : {"vm://a", "vm:(broker:(tcp://h:1))", "failover:(tcp://h:1,vm://a)", "failover:vm://a"})
        EXPECT_TRUE(host::provider::isInJvmBroker(url)) << url;
    for (const char* url : {"", "tcp://vm:61616", "tcp://h:1?x=vm://a", "vmx://a"}) EXPECT_FALSE(host::provider::isInJvmBroker(url)) << url;
}

TEST(Files, EveryMissingOneIsNamed) {
    host::Settings settings;
    settings.classPath = {"/a/kel-connectors.jar", "/a/activemq-client.jar", "absent.jar"};
    settings.addClassPath = {"/", "hawtbuf.jar"};
    EXPECT_EQ(failureOf([&] { host::classPath(settings.classPath, settings.addClassPath); }),
              "The Java class path lacks /a/kel-connectors.jar, /a/activemq-client.jar (Debian package libactivemq-java), absent.jar.");
    const std::string longName(300, 'x');
    settings.addClassPath = {"/" + longName, longName};
    EXPECT_TRUE(failureOf([&] {
                    host::classPath(settings.classPath, settings.addClassPath);
                }).ends_with(", absent.jar, /" + longName + ", " + longName + "."));
    settings.classPath = {"/"};
    EXPECT_THROW(host::classPath(settings.classPath, settings.addClassPath), host::Failure)
        << "the connector is added, and is not beside this test";
    const std::string text = failureOf([] { const host::Plugin plugin(KEL_NO_PLUGIN); });
    EXPECT_TRUE(text.starts_with("The plug-in " KEL_NO_PLUGIN " lacks the entry points createAdapter, ")) << text;
    EXPECT_TRUE(text.ends_with(", getSampleRow.")) << text;
    EXPECT_TRUE(failureOf([] { const host::Plugin plugin("/absent.so"); }).starts_with("The plug-in cannot be loaded: /absent.so: "));
}

TEST_F(Configuration, CheckNamesWhatWouldBeTakenForSomethingElse) {
    const std::string good = std::string(kStream) +
                             "[connection]\ndataFormat = \"XML\"\nconnectionFactory = \"C\"\njndiContextFactory = \"F\"\n"
                             "jndiURL = \"tcp://h:1\"\ndestinationType = \"TOPIC\"\ndestinationName = \"D\"\n";
    ::setenv("KEL_HOME", "/nowhere", 1);
    EXPECT_EQ(host::checkSettings(read(good)).problems, Texts());
    const std::pair<Texts, Texts> rows[] = {
        // overrides, and how each sentence behind the section's name begins
        {{"connection.dataFormat=xml"}, {"dataFormat is \"xml\"; allowed are \"CSV\", \"XML\", \"FIX\", \"OBJECTARRAY\", \"CUSTOM\"."}},
        {{"connection.dataFormat=CSV"}, {"delimiter is missing; it must be the text between two values, such as \",\"."}},
        {{"connection.dataFormat=CUSTOM"}, {"converterClassName is missing; it must be the full name of the converter's Java class."}},
        {{"connection.dataFormat=FIX", "connection.fixVersion=9.9"},
         {"fixMessageType is missing", "fixVersion is \"9.9\"; its dictionary /nowhere/etc/fix/dictionary9.9.txt cannot be read."}},
        {{"connection.destinationType=queue"}, {"destinationType is \"queue\"; allowed are \"QUEUE\", \"TOPIC\"."}},
        {{"connection.subscriptionMode=durable"}, {"subscriptionMode is \"durable\"; allowed are \"NONDURABLE\", \"DURABLE\"."}},
        {{"connection.subscriptionMode=DURABLE", "connection.batchsize=-1", "connection.destinationType=QUEUE"},
         {"subscriptionMode is \"DURABLE\"; a queue has no durable subscriptions", "clientID is missing", "subscriptionName is missing",
          "batchsize is \"-1\"; it must be the number of messages a commit, from 1."}},
        {{"connection.destinationName=LDAP://x/y", "connection.connectionFactory=rmi:z"},
         {"connectionFactory is \"rmi:z\"; it must be a name at the provider", "destinationName is \"LDAP://x/y\"; it must be"}},
        {{"connection.destinationName=ldap", "connection.connectionFactory=queue:rmi"}, {}},
        {{"connection.jndiURL=vm://x"}, {"jndiURL is \"vm://x\"; a broker inside the process keeps its messages in files"}},
        {{"connection.jndiURL=vm://x", "host.addClassPath=[\"activemq-kahadb-store.jar\"]"}, {}},
        {{"host.jvmOptions=[\"-Dkel.jms.browseMillis=0\"]"}, {"jvmOptions has \"-Dkel.jms.browseMillis=0\"; the value must be an integer"}},
    };
    for (const auto& [overrides, expected] : rows) {
        const Texts found = host::checkSettings(read(good, overrides)).problems;
        ASSERT_EQ(found.size(), expected.size()) << overrides[0];
        for (size_t i = 0; i < found.size(); ++i) EXPECT_TRUE(found[i].substr(found[i].find('.') + 1).starts_with(expected[i])) << found[i];
    }
    // A dictionary's line as the adapter reads it.
    const std::string home = testing::TempDir() + "home";
    std::filesystem::create_directories(home + "/etc/fix");
    std::ofstream(home + "/etc/fix/dictionary9.9.txt") << "44=A  # limit only\n45=B\n";
    ::setenv("KEL_HOME", home.c_str(), 1);
    const Texts fix =
        host::checkSettings(read(good, {"connection.dataFormat=FIX", "connection.fixVersion=9.9", "connection.fixMessageType=D"})).problems;
    EXPECT_EQ(fix, Texts());
    const host::Settings durable =
        read(good, {"connection.delimiter=;", "connection.dataFormat=FIX", "connection.batchsize=2", "connection.subscriptionMode=DURABLE",
                    "connection.clientID=c", "connection.subscriptionName=s", "host.settle=server",
                    "connection.jndiContextFactory=org.apache.activemq.jndi.ActiveMQInitialContextFactory"});
    const Texts notes = host::checkSettings(durable).notes;
    ASSERT_EQ(notes.size(), 3U);
    EXPECT_TRUE(notes[0].starts_with("connection.batchsize is 2; messages of other types")) << notes[0];
    EXPECT_TRUE(notes[1].find("dead-letter queue after six") != std::string::npos) << notes[1];
    EXPECT_EQ(notes[2], "connection.delimiter is not read unless connection.dataFormat is \"CSV\".");
    read(good, {"connection.jndiURL=[1]"});
    EXPECT_EQ(problems.size(), 0U) << "an override of a text parameter is a text";
}

// Two languages have the limits' names: the connector's are read from its source.
TEST(ConnectorLimits, AreThoseThatTheConnectorReads) {
    std::stringstream source;
    source << std::ifstream(KEL_SOURCE_DIR "/connector/src/main/java/com/morvex/kel/connectors/Tuning.java").rdbuf();
    const std::string text = source.str(), begin = "\"kel.jms.";
    std::set<std::string> names;
    for (size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1))
        names.insert(text.substr(at + begin.size(), text.find('"', at + 1) - at - begin.size()));
    for (const char* own : {"settle", "transacted", "settleAfter", "settleMillis", "selector"}) {
        EXPECT_TRUE(host::faultOfLimit("-Dkel.jms." + std::string(own) + "=1").ends_with(" decides on; it must be absent.")) << own;
        names.erase(own);
    }
    for (const std::string& name : names) EXPECT_EQ(host::faultOfLimit("-Dkel.jms." + name + "=1"), "");
    const std::string known = host::faultOfLimit("-Dkel.jms.none=1");
    EXPECT_EQ(static_cast<size_t>(std::count(known.begin(), known.end(), ',')), names.size()) << known;
}

}  // namespace
