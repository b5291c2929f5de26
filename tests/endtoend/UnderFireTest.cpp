// That no message is lost to a slow, failing or full output, a slow converter or too little memory, however the run
// is ended meanwhile; that an ordered stop repeats none; and that every stop ends.
#include <sys/stat.h>

#include <atomic>
#include <functional>

#include "tests/endtoend/Delivery.h"

namespace {

using namespace endtoend;

constexpr int kSmall = 3;    // rounds of each kind
constexpr int kLarge = 100;  // the same of a soak

// A pipe that is read as slowly as wanted, or not at all. What a host wrote before it was killed is in it still.
class SlowOutput {
public:
    SlowOutput(const std::string& pipe, const std::string& rows) : rows_(rows) {
        ::mkfifo(pipe.c_str(), 0600);
        // Also for writing: so it has no end, whoever comes and goes.
        descriptor_ = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
        ::fcntl(descriptor_, F_SETPIPE_SZ, 4096);  // so that little is on the way
        thread_ = std::thread([this] { copy(); });
    }
    ~SlowOutput() {
        done = true;
        thread_.join();
        ::close(descriptor_);
    }
    SlowOutput(const SlowOutput&) = delete;
    SlowOutput& operator=(const SlowOutput&) = delete;

    std::atomic<bool> reads{true};
    std::atomic<bool> done{false};  // reads what is left, at full speed

private:
    void copy() {
        std::ofstream out(rows_, std::ios::app);
        char buffer[300];
        while (true) {
            const ssize_t count = reads || done ? ::read(descriptor_, buffer, sizeof buffer) : 0;
            if (count > 0) out.write(buffer, count);
            if (count <= 0 && done) return;
            if (!done) std::this_thread::sleep_for(std::chrono::microseconds(500));
        }
    }
    const std::string rows_;
    int descriptor_;
    std::thread thread_;
};

class UnderFire : public Delivery {
protected:
    const Broker broker{scratch};
    const std::string all = scratch.path("all");  // what came out of the pipes
    std::string config = scratch.write("c.toml", trades(broker.url()));
    int ends = 0;
    int messages = 0;

    void sendMore(int count) {
        send(scratch, config, numbered(messages + 1, messages + count));
        messages += count;
    }
    // Ends a run in one of four ways; true when it was in order.
    bool end(HostProcess& host) {
        ++ends;
        sleepBetween(0, 0.2);
        const int way = std::uniform_int_distribution<>(0, 3)(random);
        if (way > 0) host.signal(SIGTERM);
        if (way == 1) sleepBetween(0, 0.3);
        if (way <= 1) host.signal(SIGKILL);
        const int status = host.wait(Seconds(12));
        EXPECT_NE(status, -1) << "it goes on after its stop\n" << host.errors();
        return status == 0;
    }
    // Runs until everything that is left is taken.
    void drain() {
        HostProcess host(scratch, run(config, {"--idle", "3"}));
        EXPECT_EQ(host.wait(Seconds(300)), 0) << host.errors();
    }
};

TEST_F(UnderFire, ASlowOutputOrOneThatNobodyReads) {
    for (const std::string pace : {"slow", "stalled now and then"}) {
        messages = ends = 0;
        const std::string pipe = scratch.path("pipe");
        std::filesystem::remove(all);
        {
            SlowOutput output(pipe, all);
            rows = pipe;
            bool isInOrder = true;
            for (int i = 0; i < (kSoak ? kLarge : kSmall); ++i) {
                sendMore(300);
                HostProcess host(scratch, run(config));
                ASSERT_TRUE(host.isReady()) << host.errors();
                output.reads = pace == "slow" || i % 2 == 0;
                isInOrder = end(host) && isInOrder;
                output.reads = true;
            }
            drain();
        }
        rows = all;
        const int repeats = report("output " + pace, messages, ends);
        EXPECT_LE(repeats, 110 * ends);  // a hundred unacknowledged ones and what was on its way
        std::filesystem::remove(pipe);
    }
}

TEST_F(UnderFire, AnOrderedStopRepeatsNothingHoweverSlowTheOutput) {
    rows = scratch.path("pipe");
    {
        SlowOutput output(rows, all);
        for (int i = 0; i < (kSoak ? kLarge : kSmall); ++i, ++ends) {
            sendMore(300);
            HostProcess host(scratch, run(config));
            ASSERT_TRUE(host.isReady()) << host.errors();
            sleepBetween(0, 0.2);
            output.reads = false;  // until the run waits for it
            sleepBetween(0, 0.1);
            host.signal(SIGTERM);
            sleepBetween(0, 0.5);
            output.reads = true;
            EXPECT_EQ(host.wait(Seconds(12)), 0) << host.errors();
        }
        drain();
    }
    rows = all;
    EXPECT_EQ(report("ordered stops", messages, ends), 0);
}

TEST_F(UnderFire, ASlowConverter) {
    config = scratch.write("c.toml", trades(broker.url()) +
                                         "converterClassName = \"com.morvex.kel.connectors.tests.SlowConverter\"\n"
                                         "[host]\naddClassPath = [\"" KEL_SLOW_CONVERTER "\"]\n");
    const Texts custom = {"--set", "connection.dataFormat=CUSTOM"};
    for (int i = 0; i < (kSoak ? kLarge : kSmall); ++i) {
        sendMore(40);
        HostProcess host(scratch, run(config, custom));
        ASSERT_TRUE(host.isReady()) << host.errors();
        end(host);
    }
    HostProcess host(scratch, run(config, {"--idle", "3", "--set", "connection.dataFormat=CUSTOM"}));
    EXPECT_EQ(host.wait(Seconds(300)), 0) << host.errors();
    report("slow converter", messages, ends);

    // One that never returns ends no stop, and its message is left where it was.
    send(scratch, config, "Trades,i,for ever,1,1\n");
    for (int i = 0; i < 2; ++i) {
        HostProcess stuck(scratch, run(config, custom));
        ASSERT_TRUE(stuck.isReady()) << stuck.errors();
        sleepBetween(0.5, 0.5);
        stuck.signal(SIGTERM);
        EXPECT_EQ(stuck.wait(Seconds(10)), 1) << stuck.errors();
        EXPECT_NE(stuck.errors().find("A call has not returned for 9 s"), std::string::npos) << stuck.errors();
    }
}

TEST_F(UnderFire, AFullDisk) {
    constexpr rlim_t kLeast = 1 << 17;  // the JVM's own files need some
    int failed = 0;
    for (int i = 0; i < (kSoak ? kLarge : kSmall); ++i, ++ends) {
        sendMore(3000);
        HostProcess host(scratch, run(config));
        const rlim_t room = std::uniform_int_distribution<rlim_t>(0, 200'000)(random);
        std::error_code none;
        const auto size = std::filesystem::file_size(rows, none);
        const rlimit limit{std::max(kLeast, (none ? 0 : size) + room), RLIM_INFINITY};
        host.limit(RLIMIT_FSIZE, limit);
        sleepBetween(1, 1.6);
        host.signal(SIGTERM);
        failed += host.wait(Seconds(12)) == 1 ? 1 : 0;
        const std::string text = read(rows);
        EXPECT_TRUE(text.empty() || text.ends_with("}}\n")) << "torn: " << text.substr(text.size() - std::min<size_t>(text.size(), 80));
    }
    EXPECT_GT(failed, 0) << "the disk was never full";
    drain();
    report("full disk", messages, ends);
}

TEST_F(UnderFire, ABrokerWhoseDiskIsFullEndsWithASentenceAndLosesNothing) {
    Broker stored(scratch, true);
    config = scratch.write("c.toml", trades(stored.url()));
    sendMore(100);
    stored.process().limit(RLIMIT_FSIZE, {1 << 16, RLIM_INFINITY});
    HostProcess sender(scratch, {"send", "--config", config, scratch.write("more", numbered(101, 5000))});
    EXPECT_EQ(stored.process().wait(Seconds(60)), 1) << stored.process().errors();
    EXPECT_NE(stored.process().errors().find("stopped by itself"), std::string::npos) << stored.process().errors();
    EXPECT_EQ(sender.wait(Seconds(60)), 1) << sender.errors();
    const std::string said = sender.errors();  // the line that failed
    messages = std::atoi(said.c_str() + said.find("more:") + 5) + 100 - 1;
    stored.start();
    drain();
    const auto [different, repeats] = counted();
    EXPECT_TRUE(different >= messages && different <= messages + 1 && repeats == 0) << different << " of " << messages << said;
}

TEST_F(UnderFire, ATimeWithoutABrokerIsNotIdle) {
    Broker gone(scratch);
    config = scratch.write("c.toml", trades(gone.url()));
    HostProcess host(scratch, run(config, {"--idle", "1.5"}));
    ASSERT_TRUE(host.isReady()) << host.errors();
    gone.kill();
    EXPECT_EQ(host.wait(Seconds(4)), -1) << host.errors();
    gone.start();
    EXPECT_EQ(host.wait(Seconds(30)), 0) << host.errors();
}

// Large messages between small ones: each is a row, or with the dead letters, and no small one is lost.
TEST_F(UnderFire, AHeapThatIsTooSmall) {
    const int rounds = kSoak ? 20 : 1;
    config = scratch.write("c.toml", trades(broker.url() + "?jms.prefetchPolicy.queuePrefetch=1"));
    const std::string large = scratch.write("large", "Trades,i," + std::string(40'000'000, 'x') + ",0,0.5");
    for (int i = 0; i < rounds; ++i, ++ends) {
        sendMore(50);
        HostProcess sender(scratch, {"send", "--whole", "--config", config, large});
        ASSERT_EQ(sender.wait(), 0) << sender.errors();
        sendMore(50);
        HostProcess host(scratch, run(config, {"--idle", "3", "--set", "host.jvmOptions=[\"-Xmx128m\"]"}));
        if (i % 2 == 1) {
            ASSERT_TRUE(host.isReady());
            sleepBetween(0, 3);
            host.signal(SIGKILL);
        }
        EXPECT_NE(host.wait(Seconds(60)), -1);
        EXPECT_TRUE(i % 2 == 1 || host.errors().find("-Xmx") != std::string::npos) << host.errors();
    }
    drain();
    const std::string taken = rows;
    rows = scratch.path("dead");
    HostProcess letters(scratch, run(config, {"--idle", "3", "--set", "connection.destinationName=ActiveMQ.DLQ"}));
    EXPECT_EQ(letters.wait(Seconds(60)), 0) << letters.errors();
    size_t found = 0;
    for (const std::string& file : {taken, rows}) {
        const std::string text = read(file);
        for (size_t at = text.find("\"xx"); at != std::string::npos; at = text.find("\"xx", at + 1)) ++found;
    }
    EXPECT_GE(found, static_cast<size_t>(rounds));
    std::ofstream(taken, std::ios::app) << read(rows) << "\"Shares\":0";
    rows = taken;
    ++messages;  // the large ones have the number 0
    report("heap of 128 MB", messages, ends);
}

}  // namespace
