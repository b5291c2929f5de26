// The main job: real JVM, real connector, real broker, the real plug-in in the stand-in server.
#include <gtest/gtest.h>
#include <signal.h>

#include <thread>

#include "tests/endtoend/HostProcess.h"

namespace {

using namespace endtoend;
using Arguments = std::vector<std::string>;

constexpr char kInJvm[] = "vm://localhost?broker.persistent=false&broker.useJmx=false";

struct Stream {
    std::string url = kInJvm;
    std::string format = "CSV";
    std::string type = "QUEUE";
    std::string more;  // further lines of [connection]
    std::string host;  // lines of [host]

    std::string text() const {
        return "[stream]\nname = \"Trades\"\ncolumns = [\n  { name = \"Symbol\", type = \"string\", key = "
               "true },\n"
               "  { name = \"Shares\", type = \"integer\" },\n  { name = \"Price\", type = \"float\" },\n]\n"
               "[connection]\ndataFormat = \"" +
               format +
               "\"\ndelimiter = \",\"\n"
               "connectionFactory = \"ConnectionFactory\"\n"
               "jndiContextFactory = \"org.apache.activemq.jndi.ActiveMQInitialContextFactory\"\n"
               "jndiURL = \"" +
               url + "\"\ndestinationType = \"" + type + "\"\ndestinationName = \"test\"\n" + more +
               "[host]\n" + host;
    }
};

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
        HostProcess host(scratch, "run",
                         {"run", "--config", scratch.write("c.toml", stream.text()), "--feed",
                          scratch.write("feed.csv", messages), "--rows", "3"});
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

}  // namespace
