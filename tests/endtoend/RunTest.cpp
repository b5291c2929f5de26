// The main job: real JVM, real connector, real broker, the real plug-in in the stand-in server.
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <sstream>
#include <thread>

#include "tests/endtoend/Streams.h"

namespace {

using namespace endtoend;
class Run : public ::testing::Test {
protected:
    Scratch scratch;
};

TEST_F(Run, RowsOfEveryKindOfText) {
    // What must come through unharmed: characters beyond the 16-bit plane, U+0000, blanks, an empty field.
    const std::string messages =
        "Trades,i,\xF0\x9F\x98\x80 \xC3\xA4,100,25.5\n"
        "Trades,u,a" +
        std::string(1, '\0') +
        "b,-1,1e300\n"
        "Quotes,i,IBM,1,1\n"
        "Trades,,IBM,1,1\n"
        "Trades,i,IBM,one,1\n"
        "Trades,i,,1,1\n"
        "Trades,i,IBM,1,1,1\n"
        "Trades,p, IBM ,,\n";
    for (const char* type : {"QUEUE", "TOPIC"}) {
        Stream stream;
        stream.type = type;
        HostProcess host(
            scratch, "run",
            {"run", "--config", scratch.write("c.toml", stream.text()), "--feed", scratch.write("feed.csv", messages), "--rows", "3"});
        ASSERT_EQ(host.wait(), 0) << host.errors();
        EXPECT_EQ(host.output(),
                  "{\"stream\":\"Trades\",\"op\":\"i\",\"seq\":0,\"row\":{\"Symbol\":\"\xF0\x9F\x98\x80 "
                  "\xC3\xA4\",\"Shares\":100,\"Price\":25.5}}\n"
                  "{\"stream\":\"Trades\",\"op\":\"u\",\"seq\":1,\"row\":{\"Symbol\":\"a\\u0000b\","
                  "\"Shares\":-1,\"Price\":1e+300}}\n"
                  "{\"stream\":\"Trades\",\"op\":\"p\",\"seq\":7,\"row\":{\"Symbol\":\" IBM "
                  "\",\"Shares\":null,\"Price\":null}}\n");
        for (const char* text : {"ready", "300289-3_JMSIN_ADAPTER_NOSTREAMOP", "Shares", "Symbol"}) {
            EXPECT_NE(host.errors().find(text), std::string::npos) << text << "\n" << host.errors();
        }
    }
}

TEST_F(Run, StopEndsAWaitingReceiveAtOnce) {
    Stream stream;
    stream.host = "jvmOptions = [\"-Dkel.jms.receiveTimeoutMillis=60000\"]\n";
    HostProcess host(scratch, "run", {"run", "--config", scratch.write("c.toml", stream.text())});
    ASSERT_TRUE(host.waitForError("ready")) << host.errors();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));  // let it wait in the receive
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(Seconds(5)), 0) << host.errors();
}

TEST_F(Run, ABrokerOfItsOwnGivesTheRowsOfTheOneInTheJvm) {
    const Broker broker(scratch);
    for (const std::string example : {"csv", "xml", "objectarray", "custom"}) {
        SCOPED_TRACE(example);
        const std::string folder = KEL_SOURCE_DIR "/examples/" + example;
        std::string messages;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().stem() == "messages") messages = entry.path();
        }
        const std::string config = folder + "/config.toml";
        const std::string rows = std::to_string(lineCount(folder + "/expected.jsonl"));
        const std::string url = "connection.jndiURL=" + broker.url();
        HostProcess host(scratch, "run", {"run", "--config", config, "--set", url, "--rows", rows});
        ASSERT_TRUE(host.waitForError("ready")) << host.errors();
        HostProcess sender(scratch, "send", {"send", "--config", config, "--set", url, messages});
        ASSERT_EQ(sender.wait(), 0) << sender.errors();
        ASSERT_EQ(host.wait(), 0) << host.errors();
        EXPECT_EQ(host.output(), read(folder + "/expected.jsonl"));
    }
}

// What a wrong start says, and its exit code.
TEST_F(Run, NamesWhatKeepsItFromStarting) {
    struct Row {
        const char* set;
        int status;
        const char* text;
    };
    const Row kRows[] = {
        {"connection.jndiURL=tcp://127.0.0.1:1", 1, "is not reachable"},
        {"connection.jndiContextFactory=no.such.Factory", 1, "no.such.Factory"},
        {"connection.connectionFactory=NoSuchName", 1, "NoSuchName"},
        {"connection.destinationName=ConnectionFactory", 1, "must be bound to a javax.jms.Queue"},
        {"host.classPath=[\"/no/such.jar\"]", 1, "/no/such.jar"},
        {"host.classPath=[\"geronimo-jms_1.1_spec.jar\"]", 1, "jndiContextFactory"},
        {"connection.dataFormat=CVS", 1, "CVS"},
        {"connection.delimeter=;", 78, "connection.delimiter"},
        {"connection.batchsize=many", 78, "batchsize"},
        {"host.jvmOptions=[\"-Xmx1\"]", 1, "Too small maximum heap"},
    };
    const std::string config = scratch.write("c.toml", Stream{}.text());
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.set);
        HostProcess host(scratch, "run", {"run", "--config", config, "--set", row.set, "--idle", "1"});
        EXPECT_EQ(host.wait(), row.status) << host.errors();
        EXPECT_NE(host.errors().find(row.text), std::string::npos) << host.errors();
        EXPECT_EQ(host.output(), "");
    }
}

// The checks of the JVM itself. It warns of calls after which nobody looks for an exception. The bridge makes
// such calls where a look is not its business: connectForInput and connectForOutput are followed by look-ups
// before the one look at the end of init; the senders' callers, initConverter and disconnect are told by the
// result alone. All of these are boolean methods. Nothing else may be warned of.
TEST_F(Run, TheJvmFindsNoFaultInTheBridge) {
    for (const std::string example : {"csv", "xml", "fix", "objectarray", "custom", "durable"}) {
        SCOPED_TRACE(example);
        const std::string folder = KEL_SOURCE_DIR "/examples/" + example;
        std::string messages;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().stem() == "messages") messages = entry.path();
        }
        HostProcess host(scratch, "run",
                         {"run", "--config", folder + "/config.toml", "--feed", messages, "--idle", "0.5", "--set",
                          std::string("connection.jndiURL=") + kInJvm, "--set", "host.jvmOptions=[\"-Xcheck:jni\"]"});
        ASSERT_EQ(host.wait(), 0) << host.errors();
        std::stringstream all(host.output() + host.errors());
        int expected = 0;
        for (std::string line; std::getline(all, line);) {
            const bool isWarning = line.find("WARNING") != std::string::npos || line.find("FATAL") != std::string::npos;
            const bool isExpected = line.ends_with("JNI call made without checking exceptions when required to from CallBooleanMethodV");
            EXPECT_TRUE(!isWarning || isExpected) << line;
            expected += isExpected;
        }
        EXPECT_GT(expected, 0) << "the JVM did not check";
    }
}

}  // namespace
