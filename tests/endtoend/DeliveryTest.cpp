// That no message is lost, whatever dies: brokers and hosts in processes of their own.
#include "tests/endtoend/Delivery.h"

namespace {

using namespace endtoend;

class Killed : public Delivery {
protected:
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

TEST_F(Killed, RunsEndedAtAnyMomentLoseNothing) {
    const int many = kSoak ? 20000 : 3000;
    const int often = kSoak ? 100 : 3;
    endRuns("queue", false, SIGKILL, many, often);
    endRuns("durable subscription", true, SIGKILL, many, often);
    endRuns("durable subscription, never a whole batch", true, SIGKILL, 5, 4);
    endRuns("queue, clean stops", false, SIGINT, 5000, 2);
}

// Only the host settles the tail of a batch; what a server drives commits whole ones.
TEST_F(Killed, AStopIsAtOnceAndAReturnRepeatsNothingThatWasCommitted) {
    for (const auto& [batchSize, settle] : {std::pair(3, "server"), std::pair(250, "server"), std::pair(100, "host")}) {
        const Broker broker(scratch);
        rows = scratch.path("rows" + std::to_string(batchSize) + settle);
        const std::string config = scratch.write("c.toml", durable(broker.url(), batchSize) + "[host]\nsettle = \"" + settle + "\"\n");
        HostProcess first(scratch, run(config, {"--set", "host.jvmOptions=[\"-Dkel.jms.receiveTimeoutMillis=60000\"]"}));
        ASSERT_TRUE(first.isReady()) << first.errors();
        send(scratch, config, numbered(1, 260));
        EXPECT_TRUE(within(Seconds(20), [&] { return lineCount(rows) >= 260; }));
        first.signal(SIGTERM);
        ASSERT_EQ(first.wait(Seconds(5)), 0) << first.errors();
        send(scratch, config, numbered(261, 300));
        HostProcess second(scratch, run(config, {"--idle", "2"}));
        ASSERT_EQ(second.wait(), 0) << second.errors();
        EXPECT_EQ(counted(), std::pair(300, settle == std::string("host") ? 0 : 260 % batchSize)) << batchSize;
    }
}

// A stop must end a write that waits, and what was not written comes again.
TEST_F(Killed, AReaderThatDoesNotReadHoldsUpNoStopAndLosesNothing) {
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

TEST_F(Killed, AKilledBrokerWithAStoreLosesNothingAndDoesNotHoldUpAStop) {
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
