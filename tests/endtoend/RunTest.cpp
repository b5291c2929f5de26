// The main job: real JVM, real connector, real broker, the real plug-in in the stand-in server.
#include "tests/endtoend/Support.h"

namespace {

using namespace endtoend;

TEST(Run, RowsOfEveryKindOfText) {
    const Scratch scratch;
    // What must come through unharmed: characters beyond the 16-bit plane, U+0000, blanks, an empty field.
    const std::string messages = "Trades,i,\xF0\x9F\x98\x80 \xC3\xA4,100,25.5\nTrades,u,a" + std::string(1, '\0') +
                                 "b,-1,1e300\nQuotes,i,IBM,1,1\nTrades,,IBM,1,1\n"
                                 "Trades,i,IBM,one,1\nTrades,i,,1,1\nTrades,i,IBM,1,1,1\nTrades,p, IBM ,,\n";
    const std::string feed = scratch.write("feed.csv", messages);
    for (const char* type : {"QUEUE", "TOPIC"}) {
        const std::string config = scratch.write("c.toml", trades(kInJvm, type));
        HostProcess host(scratch, {"run", "--config", config, "--feed", feed, "--rows", "3"});
        ASSERT_EQ(host.wait(), 0) << host.errors();
        EXPECT_EQ(host.output(),
                  "{\"stream\":\"Trades\",\"op\":\"i\",\"seq\":0,\"row\":{\"Symbol\":\"\xF0\x9F\x98\x80 "
                  "\xC3\xA4\",\"Shares\":100,\"Price\":25.5}}\n"
                  "{\"stream\":\"Trades\",\"op\":\"u\",\"seq\":1,\"row\":{\"Symbol\":\"a\\u0000b\",\"Shares\":-1,\"Price\":1e+300}}\n"
                  "{\"stream\":\"Trades\",\"op\":\"p\",\"seq\":7,\"row\":{\"Symbol\":\" IBM \",\"Shares\":null,\"Price\":null}}\n");
        for (const char* text : {"ready", "300289-3_JMSIN_ADAPTER_NOSTREAMOP", "Shares", "Symbol"}) {
            EXPECT_NE(host.errors().find(text), std::string::npos) << text << "\n" << host.errors();
        }
    }
}

// The checks of the JVM itself. It warns of calls after which nobody looks for an exception. The bridge makes
// such calls where a look is not its business: connectForInput and connectForOutput are followed by look-ups
// before the one look at the end of init; the senders' callers, initConverter and disconnect are told by the
// result alone. All of these are boolean methods, and what the JVM names as the call that came next is a look-up,
// or the first receive behind initConverter. Nothing else may be warned of.
TEST(Run, ExamplesGiveTheirRowsAndTheJvmFindsNoFaultInTheBridge) {
    const Scratch scratch;
    for (const std::string name : {"csv", "xml", "fix", "objectarray", "custom", "durable"}) {
        SCOPED_TRACE(name);
        const std::string folder = KEL_SOURCE_DIR "/examples/" + name;
        std::string messages;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().stem() == "messages") messages = entry.path();
        }
        HostProcess host(scratch, {"run", "--config", folder + "/config.toml", "--feed", messages, "--idle", "0.5", "--set",
                                   std::string("connection.jndiURL=") + kInJvm, "--set", "host.jvmOptions=[\"-Xcheck:jni\"]"});
        ASSERT_EQ(host.wait(), 0) << host.errors();
        EXPECT_EQ(host.output(), read(folder + "/expected.jsonl"));
        std::stringstream all(host.errors());
        int expected = 0;
        for (std::string line; std::getline(all, line);) {
            const bool isWarning = line.find("WARNING") != std::string::npos || line.find("FATAL") != std::string::npos;
            const bool isExpected = line.ends_with("JNI call made without checking exceptions when required to from CallBooleanMethodV");
            EXPECT_TRUE(!isWarning || isExpected) << line;
            if (!isExpected) continue;
            ++expected;
            std::string next;
            while (next.find("checked_jni_") == std::string::npos && std::getline(all, next)) {
            }
            const bool isLookUp = next.find("_FindClass+") != std::string::npos || next.find("_GetMethodID+") != std::string::npos;
            EXPECT_TRUE(isLookUp || (name == "custom" && next.find("_CallObjectMethodV+") != std::string::npos)) << next;
        }
        EXPECT_GT(expected, 0) << "the JVM did not check";
    }
}

}  // namespace
