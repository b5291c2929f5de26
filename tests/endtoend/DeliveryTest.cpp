// That no message is lost, whatever dies: brokers and hosts in processes of their own.
//
// KEL_SOAK=1 in the environment (tools/soak sets it) makes the numbers large.
#include <gtest/gtest.h>
#include <signal.h>

#include <iostream>
#include <random>
#include <thread>

#include "tests/endtoend/Streams.h"

namespace {

using namespace endtoend;

const bool kSoak = std::getenv("KEL_SOAK") != nullptr;

void sleepFor(double seconds) { std::this_thread::sleep_for(Seconds(seconds)); }

class Delivery : public ::testing::Test {
protected:
    Scratch scratch;
    std::mt19937 random{20240229};

    std::vector<std::string> run(const std::string& config, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> all = {"run", "--config", config, "--out", scratch.path("rows")};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    double between(double low, double high) { return std::uniform_real_distribution<>(low, high)(random); }

    // Runs of the host that are killed at any moment, until every message has become a row.
    void killRuns(const Stream& stream, int messages, int kills) {
        const std::string config = scratch.write("c.toml", stream.text());
        if (stream.type == "TOPIC") {
            HostProcess subscriber(scratch, "run", run(config, {"--idle", "0.1"}));
            ASSERT_EQ(subscriber.wait(), 0) << subscriber.errors();
        }
        send(scratch, config, numberedMessages(scratch, 1, messages));
        for (int i = 0; i < kills; ++i) {
            HostProcess host(scratch, "run", run(config));
            ASSERT_TRUE(host.waitForError("ready")) << host.errors();
            sleepFor(between(0, 0.03));
            host.signal(SIGKILL);
            host.wait();
        }
        HostProcess host(scratch, "run", run(config, {"--idle", "3"}));
        EXPECT_EQ(host.wait(Seconds(300)), 0) << host.errors();
        report(stream.type, messages, kills);
    }

    void report(const std::string& what, int messages, int kills) const {
        const Numbers numbers = numbersIn(scratch.path("rows"));
        EXPECT_EQ(numbers.different.size(), static_cast<size_t>(messages));
        std::cout << what << ": " << messages << " messages, " << kills << " kills, "
                  << messages - static_cast<int>(numbers.different.size()) << " missing, " << numbers.repeats << " repeated\n";
    }
};

TEST_F(Delivery, KilledRunsOfAQueueLoseNothing) {
    const Broker broker(scratch);
    Stream stream;
    stream.url = broker.url();
    killRuns(stream, kSoak ? 20000 : 3000, kSoak ? 100 : 5);
}

TEST_F(Delivery, KilledRunsOfADurableSubscriptionLoseNothing) {
    const Broker broker(scratch);
    killRuns(Stream::durable(broker.url(), 100), kSoak ? 20000 : 3000, kSoak ? 100 : 5);
}

TEST_F(Delivery, KillsBeforeAnyCommitLoseNothing) {
    const Broker broker(scratch);
    killRuns(Stream::durable(broker.url(), 100), 5, 8);
}

TEST_F(Delivery, AStopAndAReturnRepeatNothingThatWasCommitted) {
    for (const int batchSize : {1, 3, 100, 250}) {
        const Scratch own;
        const Broker broker(own);
        const std::string config = own.write("c.toml", Stream::durable(broker.url(), batchSize).text());
        const std::string rows = own.path("rows");
        const std::vector<std::string> arguments = {"run", "--config", config, "--out", rows};
        {
            HostProcess first(own, "run", arguments);
            ASSERT_TRUE(first.waitForError("ready")) << first.errors();
            send(own, config, numberedMessages(own, 1, 260));
            EXPECT_TRUE(within(Seconds(20), [&] { return lineCount(rows) >= 260; }));
            first.signal(SIGTERM);
            ASSERT_EQ(first.wait(), 0) << first.errors();
        }
        send(own, config, numberedMessages(own, 261, 300));
        HostProcess second(own, "run", {"run", "--config", config, "--out", rows, "--idle", "2"});
        ASSERT_EQ(second.wait(), 0) << second.errors();
        const Numbers numbers = numbersIn(rows);
        EXPECT_EQ(numbers.different.size(), 300U);
        EXPECT_EQ(numbers.repeats, static_cast<size_t>(260 % batchSize)) << batchSize;
    }
}

TEST_F(Delivery, AQueueIsReadWithoutRepeatsOverCleanStops) {
    const Broker broker(scratch);
    Stream stream;
    stream.url = broker.url();
    const std::string config = scratch.write("c.toml", stream.text());
    send(scratch, config, numberedMessages(scratch, 1, 5000));
    for (int i = 0; i < 4; ++i) {
        HostProcess host(scratch, "run", run(config));
        ASSERT_TRUE(host.waitForError("ready")) << host.errors();
        sleepFor(between(0, 0.1));
        host.signal(SIGINT);
        EXPECT_EQ(host.wait(Seconds(5)), 0) << host.errors();
    }
    HostProcess host(scratch, "run", run(config, {"--idle", "2"}));
    EXPECT_EQ(host.wait(), 0) << host.errors();
    const Numbers numbers = numbersIn(scratch.path("rows"));
    EXPECT_EQ(numbers.different.size(), 5000U);
    EXPECT_EQ(numbers.repeats, 0U);
}

TEST_F(Delivery, AKilledBrokerWithAStoreLosesNothing) {
    Broker broker(scratch, true);
    const int messages = kSoak ? 10000 : 2000;
    const std::string config = scratch.write("c.toml", Stream::durable(broker.url(), 100).text());
    HostProcess host(scratch, "run", run(config));
    ASSERT_TRUE(host.waitForError("ready")) << host.errors();
    for (int i = 0; i < 4; ++i) {
        const int first = messages / 4 * i + 1;
        send(scratch, config, numberedMessages(scratch, first, first + messages / 4 - 1));
        if (i == 3) break;
        sleepFor(between(0, 0.2));
        broker.kill();
        sleepFor(between(0.1, 1));
        broker.start();
    }
    EXPECT_TRUE(within(Seconds(60), [&] { return numbersIn(scratch.path("rows")).different.size() >= static_cast<size_t>(messages); }))
        << host.errors();
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0) << host.errors();
    EXPECT_NE(host.errors().find("bad 0"), std::string::npos) << host.errors();
    report("broker killed", messages, 3);
}

TEST_F(Delivery, AnOutageIsNoBadRow) {
    Broker broker(scratch);
    Stream stream;
    stream.url = broker.url();
    const std::string config = scratch.write("c.toml", stream.text());
    HostProcess host(scratch, "run", run(config));
    ASSERT_TRUE(host.waitForError("ready")) << host.errors();
    broker.kill();
    sleepFor(kSoak ? 20 : 2);
    broker.start();
    const auto returned = std::chrono::steady_clock::now();
    send(scratch, config, numberedMessages(scratch, 1, 10));
    EXPECT_TRUE(within(Seconds(5), [&] { return lineCount(scratch.path("rows")) >= 10; }));
    std::cout << "rows again " << Seconds(std::chrono::steady_clock::now() - returned).count() << " s after the broker's return\n";
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(Seconds(5)), 0);
    EXPECT_NE(host.errors().find("bad 0"), std::string::npos) << host.errors();
}

TEST_F(Delivery, AStopDuringAnOutageIsPromptAndTheReturnGetsTheRest) {
    Broker broker(scratch, true);
    const std::string config = scratch.write("c.toml", Stream::durable(broker.url(), 100).text());
    HostProcess host(scratch, "run", run(config));
    ASSERT_TRUE(host.waitForError("ready")) << host.errors();
    send(scratch, config, numberedMessages(scratch, 1, 250));
    broker.kill();
    ASSERT_TRUE(host.waitForError("was lost")) << host.errors();
    sleepFor(0.5);  // in the middle of connecting again
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(Seconds(3)), 0) << host.errors();
    broker.start();
    send(scratch, config, numberedMessages(scratch, 251, 300));
    HostProcess next(scratch, "run", run(config, {"--idle", "2"}));  // the same client ID
    EXPECT_EQ(next.wait(), 0) << next.errors();
    report("stopped while reconnecting", 300, 1);
}

}  // namespace
