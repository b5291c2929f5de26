// That no message is lost, whatever dies: brokers and hosts in processes of their own.
//
// KEL_SOAK=1 in the environment (tools/soak sets it) makes the numbers large.
#include <iostream>
#include <random>

#include "tests/endtoend/Support.h"

namespace {

using namespace endtoend;

const bool kSoak = std::getenv("KEL_SOAK") != nullptr;

// Messages whose column Shares counts from first to last.
std::string numbered(int first, int last) {
    std::string lines;
    for (int i = first; i <= last; ++i) lines += "Trades,i,S," + std::to_string(i) + ",0.5\n";
    return lines;
}

std::string durable(const std::string& url, int batchSize) {
    // Without the option the client gives up messages that came again more than six times without a commit.
    return trades(url + "?jms.redeliveryPolicy.maximumRedeliveries=-1", "TOPIC") +
           "subscriptionMode = \"DURABLE\"\nclientID = \"test\"\nsubscriptionName = \"test\"\nbatchsize = " + std::to_string(batchSize) +
           "\n";
}

class Delivery : public ::testing::Test {
protected:
    const Scratch scratch;
    std::string rows = scratch.path("rows");
    std::mt19937 random{20240229};

    Texts run(const std::string& config, const Texts& more = {}) const {
        Texts all = {"run", "--config", config, "--out", rows};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    void sleepBetween(double low, double high) {
        std::this_thread::sleep_for(Seconds(std::uniform_real_distribution<>(low, high)(random)));
    }
    // How many different numbers are in the rows, and how many of them again.
    std::pair<int, int> counted() const {
        std::set<int> different;
        int repeats = 0;
        const std::string text = read(rows);
        const std::string name = "\"Shares\":";
        for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
            if (!different.insert(std::atoi(text.c_str() + at + name.size())).second) ++repeats;
        }
        return {static_cast<int>(different.size()), repeats};
    }
    int report(const std::string& what, int messages, int kills) const {
        const auto [different, repeats] = counted();
        EXPECT_EQ(different, messages) << what;
        std::cout << what << ": " << messages << " messages, " << kills << " kills, " << messages - different << " missing, " << repeats
                  << " repeated\n";
        return repeats;
    }

    // Runs of the host that end at any moment, until every message has become a row.
    void endRuns(const std::string& what, bool isDurable, int signal, int messages, int kills) {
        SCOPED_TRACE(what);
        const Broker broker(scratch);
        rows = scratch.path(what);
        const std::string config = scratch.write("c.toml", isDurable ? durable(broker.url(), 100) : trades(broker.url()));
        if (isDurable) {
            HostProcess subscriber(scratch, run(config, {"--idle", "0.1"}));
            ASSERT_EQ(subscriber.wait(), 0) << subscriber.errors();
        }
        send(scratch, config, numbered(1, messages));
        for (int i = 0; i < kills; ++i) {
            HostProcess host(scratch, run(config));
            ASSERT_TRUE(host.isReady()) << host.errors();
            sleepBetween(0, 0.03);
            host.signal(signal);
            ASSERT_EQ(host.wait(Seconds(5)), signal == SIGINT ? 0 : 128 + SIGKILL) << host.errors();
        }
        HostProcess host(scratch, run(config, {"--idle", "3"}));
        EXPECT_EQ(host.wait(Seconds(300)), 0) << host.errors();
        const int repeats = report(what, messages, kills);
        EXPECT_TRUE(signal == SIGKILL || repeats == 0) << repeats;
    }
};

TEST_F(Delivery, RunsEndedAtAnyMomentLoseNothing) {
    const int many = kSoak ? 20000 : 3000;
    const int often = kSoak ? 100 : 5;
    endRuns("queue", false, SIGKILL, many, often);
    endRuns("durable subscription", true, SIGKILL, many, often);
    endRuns("durable subscription, never a whole batch", true, SIGKILL, 5, 8);
    endRuns("queue, clean stops", false, SIGINT, 5000, 4);
}

TEST_F(Delivery, AStopIsAtOnceAndAReturnRepeatsNothingThatWasCommitted) {
    for (const int batchSize : {1, 3, 100, 250}) {
        const Broker broker(scratch);
        rows = scratch.path("rows" + std::to_string(batchSize));
        const std::string config = scratch.write("c.toml", durable(broker.url(), batchSize));
        HostProcess first(scratch, run(config, {"--set", "host.jvmOptions=[\"-Dkel.jms.receiveTimeoutMillis=60000\"]"}));
        ASSERT_TRUE(first.isReady()) << first.errors();
        send(scratch, config, numbered(1, 260));
        EXPECT_TRUE(within(Seconds(20), [&] { return lineCount(rows) >= 260; }));
        first.signal(SIGTERM);
        ASSERT_EQ(first.wait(Seconds(5)), 0) << first.errors();
        send(scratch, config, numbered(261, 300));
        HostProcess second(scratch, run(config, {"--idle", "2"}));
        ASSERT_EQ(second.wait(), 0) << second.errors();
        EXPECT_EQ(counted(), std::pair(300, 260 % batchSize)) << batchSize;
    }
}

// A stop must end a write that waits, and what was not written comes again.
TEST_F(Delivery, AReaderThatDoesNotReadHoldsUpNoStopAndLosesNothing) {
    constexpr int kMessages = 2000;  // more than a pipe takes
    for (const bool isDurable : {false, true}) {
        const Broker broker(scratch);
        rows = scratch.path(isDurable ? "durable rows" : "rows");
        const std::string config = scratch.write("c.toml", isDurable ? durable(broker.url(), 1) : trades(broker.url()));
        HostProcess subscriber(scratch, run(config, {"--idle", "0.1"}));
        ASSERT_EQ(subscriber.wait(), 0) << subscriber.errors();
        send(scratch, config, numbered(1, kMessages));
        const UnreadPipe pipe;
        HostProcess host(scratch, {"run", "--config", config}, pipe.setup());
        EXPECT_TRUE(within(Seconds(30), [&] { return pipe.isFull(); }));
        host.signal(SIGTERM);
        EXPECT_EQ(host.wait(Seconds(30)), 1) << host.errors();
        EXPECT_NE(host.errors().find("took nothing for 3 s after the stop"), std::string::npos) << host.errors();
        std::ofstream(rows) << pipe.taken();  // its torn row is cut off
        HostProcess next(scratch, run(config, {"--idle", "2"}));
        EXPECT_EQ(next.wait(), 0) << next.errors();
        report("nobody reads", kMessages, 1);
    }
}

TEST_F(Delivery, AKilledBrokerWithAStoreLosesNothingAndDoesNotHoldUpAStop) {
    Broker broker(scratch, true);
    const int messages = kSoak ? 10000 : 2000;
    const std::string config = scratch.write("c.toml", durable(broker.url(), 100));
    HostProcess host(scratch, run(config));
    ASSERT_TRUE(host.isReady()) << host.errors();
    for (int i = 0; i < 4; ++i) {
        if (i > 0) {
            sleepBetween(0, 0.2);
            broker.kill();
            sleepBetween(kSoak ? 20 : 0.1, kSoak ? 20 : 2);
            broker.start();
        }
        send(scratch, config, numbered(messages / 4 * i + 1, messages / 4 * (i + 1)));
    }
    EXPECT_TRUE(within(Seconds(60), [&] { return counted().first >= messages; })) << host.errors();
    report("broker killed", messages, 3);
    send(scratch, config, numbered(messages + 1, messages + 250));
    broker.kill();
    sleepBetween(0.5, 0.5);  // in the middle of connecting again
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(Seconds(3)), 0) << host.errors();
    EXPECT_NE(host.errors().find("bad 0"), std::string::npos) << host.errors();
    broker.start();
    send(scratch, config, numbered(messages + 251, messages + 300));
    HostProcess next(scratch, run(config, {"--idle", "2"}));  // the same client ID
    EXPECT_EQ(next.wait(), 0) << next.errors();
    report("stopped while reconnecting", messages + 300, 4);
}

}  // namespace
