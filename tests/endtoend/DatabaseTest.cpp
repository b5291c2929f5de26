// That every message comes into a database exactly once, whatever dies meanwhile: the host, the broker, the database,
// or a host that was taken for dead and comes back.
#include <atomic>
#include <future>
#include <map>

#include "tests/endtoend/Databases.h"
#include "tests/endtoend/Delivery.h"

namespace {

using namespace endtoend;

int numberOf(const char* variable, int small, int large) {
    const char* const text = std::getenv(variable);
    return text != nullptr ? std::atoi(text) : kSoak ? large : small;
}

// How much of what; tools/soak sets the variables.
const int kMessages = numberOf("KEL_SOAK_MESSAGES", 2000, 1'000'000);
const int kHosts = numberOf("KEL_SOAK_KILLS", 5, 200);
const int kServers = numberOf("KEL_SOAK_SERVER_KILLS", 5, 20);
const int kPace = numberOf("KEL_SOAK_PACE", 500, 1500);  // messages a second

enum class Destination { kQueue, kDurable };

struct Way {
    const char* database;
    Destination destination;
    const char* mode;
};

std::string nameOf(const Way& way) {
    return std::string(way.database) + (way.destination == Destination::kQueue ? "_queue_" : "_durable_") + way.mode;
}

// What is to come out of the messages 1 to `count`. Every 97th is no row. Of the others a table of kAppend keeps each; for kApply they
// go in fours: an insert, an update, an upsert and a delete, the last of a row so old that a batch that is written twice inserts none
// that is gone.
struct Expected {
    long rows = 0;      // in the table
    long rejected = 0;  // kept
    long sum = 0;       // of the column Shares
};

constexpr int kBadEvery = 97;
constexpr int kAge = 400;

char opcodeOf(int number) { return "iupd"[(number - 1) % 4]; }

// The key, as the number of the message that inserted it.
int keyOf(int number) { return opcodeOf(number) == 'd' ? number - 3 - kAge : number - (number - 1) % 4; }

std::string message(const Way& way, int number) {
    const bool isBad = number % kBadEvery == 0;
    const bool isApplied = way.mode == std::string("apply");
    std::string line = "Trades,";
    line += isApplied ? opcodeOf(number) : 'i';
    line += isApplied ? ",K" + std::to_string(keyOf(number)) : ",S";
    return line + (isBad ? ",no number " : ",") + std::to_string(number) + ",0.5\n";
}

Expected expectedOf(const Way& way, int count) {
    Expected expected;
    std::map<int, int> table;
    for (int number = 1; number <= count; ++number) {
        const int key = way.mode == std::string("apply") ? keyOf(number) : number;
        const char op = way.mode == std::string("apply") ? opcodeOf(number) : 'i';
        const bool isThere = table.count(key) > 0;
        if (number % kBadEvery == 0 || (op == 'i' && isThere) || ((op == 'u' || op == 'd') && !isThere)) {
            ++expected.rejected;
            continue;
        }
        if (op == 'd')
            table.erase(key);
        else
            table[key] = number;
    }
    for (const auto& [key, shares] : table) expected.sum += shares;
    expected.rows = static_cast<long>(table.size());
    return expected;
}

// One waits for the broker's disk with every message; several share the wait.
const int kSenders = kSoak ? 4 : 1;

// Feeds senders with messages at a pace until it is told that it is enough.
class Feed {
public:
    Feed(const Scratch& scratch, const std::string& config, const Way& way) : way_(way) {
        for (int i = 0; i < kSenders; ++i) {
            const std::string pipe = scratch.path("pipe" + std::to_string(i));
            ::mkfifo(pipe.c_str(), 0600);
            files_.push_back(std::make_unique<Scratch>());
            senders_.push_back(std::make_unique<HostProcess>(*files_.back(), Texts{"send", "--config", config, pipe}));
            pipes_.push_back(std::fopen(pipe.c_str(), "we"));  // no child may hold it open
        }
        thread_ = std::thread([this] { feed(); });
    }
    ~Feed() {
        isEnough_ = true;
        thread_.join();
    }
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    // How many there are in the end.
    int finish() {
        isEnough_ = true;
        int sent = 0;
        for (const auto& sender : senders_) {
            EXPECT_EQ(sender->wait(Seconds(3600)), 0) << sender->errors();
            const std::string said = sender->errors();
            sent += std::atoi(said.c_str() + said.rfind("sent ") + 5);
        }
        return sent;
    }

private:
    void feed() {
        constexpr auto kStep = std::chrono::milliseconds(20);
        const int each = std::max(kPace / 50, 1);
        const auto isSound = [](FILE* pipe) { return std::ferror(pipe) == 0; };
        int number = 0;
        for (auto next = std::chrono::steady_clock::now(); std::all_of(pipes_.begin(), pipes_.end(), isSound); next += kStep) {
            if (isEnough_ && number >= kMessages) break;
            std::this_thread::sleep_until(next);
            for (int i = 0; i < each; ++i, ++number) {
                // All that concerns a key goes the same way, and so in order.
                std::fputs(message(way_, number + 1).c_str(), pipes_[static_cast<size_t>(number / 4 % kSenders)]);
            }
            for (FILE* pipe : pipes_) std::fflush(pipe);
        }
        for (FILE* pipe : pipes_) std::fclose(pipe);
    }
    const Way way_;
    std::vector<std::unique_ptr<Scratch>> files_;
    std::vector<std::unique_ptr<HostProcess>> senders_;
    std::vector<FILE*> pipes_;
    std::atomic<bool> isEnough_{false};
    std::thread thread_;
};

class Databases : public Delivery, public ::testing::WithParamInterface<Way> {
protected:
    Broker broker{scratch, true};
    const Scratch other;  // of a second host
    std::unique_ptr<Database> database;
    std::string config;
    long repeated = 0;

    void SetUp() override {
        ::signal(SIGPIPE, SIG_IGN);
        database = makeDatabase(GetParam().database, scratch);
        if (!database) GTEST_SKIP() << "no " << GetParam().database << " is installed";
        config = scratch.write("c.toml", textOf(broker.url() + "?wireFormat.maxInactivityDuration=2000"));
        HostProcess first(scratch, {"run", "--config", config, "--idle", "0.1"});  // makes the subscription and the tables
        ASSERT_EQ(first.wait(), 0) << first.errors();
    }

    std::string textOf(const std::string& url) const {
        const std::string subscription = "subscriptionMode = \"DURABLE\"\nclientID = \"test\"\nsubscriptionName = \"test\"\n";
        return (GetParam().destination == Destination::kQueue ? trades(url) : trades(url, "TOPIC") + subscription) +
               "batchsize = 100\n[sink]\nurl = \"" + database->url() + "\"\nmode = \"" + GetParam().mode + "\"\nleaseSeconds = 2\n";
    }
    // One that outlives the broker.
    std::string sendersConfig() const {
        return scratch.write("sender.toml", textOf("failover:(" + broker.url() + ")?maxReconnectDelay=200"));
    }

    std::unique_ptr<HostProcess> newHost(const Scratch& files) const {
        return std::make_unique<HostProcess>(files, Texts{"run", "--config", config});
    }
    static bool isReady(const HostProcess& host) { return host.errors().find("ready\n") != std::string::npos; }
    // As a service manager would: again where the broker or the database was away.
    std::unique_ptr<HostProcess> runningHost() const {
        std::unique_ptr<HostProcess> host;
        EXPECT_TRUE(within(Seconds(120), [&] {
            host = newHost(scratch);
            bool hasEnded = false;
            return within(Seconds(60),
                          [&] {
                              hasEnded = host->wait(Seconds(0)) != -1;
                              return hasEnded || isReady(*host);
                          }) &&
                   !hasEnded;
        })) << host->errors();
        return host;
    }
    // Until rows come again.
    void flows(const HostProcess& host) const {
        const long before = progress();
        EXPECT_TRUE(within(Seconds(60), [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            return progress() > before;
        })) << host.errors();
    }
    long progress() const { return database->number("SELECT coalesce(max(\"Shares\"), 0) FROM \"Trades\""); }

    void end(HostProcess& host, int way) {
        host.signal(way);
        const int status = host.wait(Seconds(20));
        EXPECT_NE(status, -1) << "it goes on after its end\n" << host.errors();
        repeated += told(host, "repeated ");
    }
    static long told(const HostProcess& host, const std::string& word) {
        const std::string said = host.errors();
        const size_t at = said.rfind(word);
        return at != std::string::npos ? std::atol(said.c_str() + at + word.size()) : 0;
    }
    std::future<void> failing(std::function<void()> fail) {
        const Seconds before(std::uniform_real_distribution<>(0, 0.5)(random));
        return std::async(std::launch::async, [before, fail] {
            std::this_thread::sleep_for(before);
            fail();
        });
    }
    void failBroker() {
        broker.kill();
        broker.start();
    }

    // Each is killed by itself, and together with one of the others or both.
    void killAll() {
        const auto isDue = [](int round, int among) { return static_cast<long>(round) * among / kHosts != (round + 1L) * among / kHosts; };
        for (int round = 0; round < kHosts; ++round) {
            const auto host = runningHost();
            const bool outlives = round % 2 == 1;
            const Seconds away(std::uniform_real_distribution<>(0.1, 1)(random));
            std::vector<std::future<void>> others;
            if (isDue(round, kServers)) {
                others.push_back(failing([this] { failBroker(); }));
                others.push_back(failing([&] { outlives ? database->failUnder(*host, away) : database->fail(away); }));
            }
            if (outlives) others.clear();  // waits
            if (outlives) flows(*host);
            sleepBetween(0, 0.5);
            end(*host, round % 5 == 4 ? SIGTERM : SIGKILL);
        }
    }

    // Everything that was sent is in the table or with the rejects, once; nothing is with the dead letters.
    void verify(const std::string& what, int sent) {
        const Expected expected = expectedOf(GetParam(), sent);
        HostProcess last(scratch, {"run", "--config", config, "--idle", "4"});
        EXPECT_EQ(last.wait(Seconds(3600)), 0) << last.errors();
        EXPECT_EQ(deadLetters(), "total 0, good 0, bad 0");
        const std::vector<long> table =
            database->numbers("SELECT count(*), count(DISTINCT \"Shares\"), coalesce(sum(\"Shares\"), 0) FROM \"Trades\"");
        const std::vector<long> rejects = database->numbers("SELECT count(*), count(DISTINCT body) FROM kel_rejected");
        ASSERT_TRUE(table.size() == 3 && rejects.size() == 2);
        const auto lacks = [](long there, long wanted) { return std::max(wanted - there, 0L); };
        const long lost = lacks(table[1], expected.rows) + lacks(rejects[1], expected.rejected);
        const long doubled = lacks(expected.rows, table[0]) + lacks(expected.rejected, rejects[0]);
        std::cout << what << ' ' << nameOf(GetParam()) << ": sent " << sent << ", rows " << table[0] << " of " << expected.rows
                  << ", rejected " << rejects[0] << " of " << expected.rejected << ", repeated " << repeated + told(last, "repeated ")
                  << " as far as hosts told, lost " << lost << ", doubled " << doubled << std::endl;
        EXPECT_EQ(table, std::vector<long>({expected.rows, expected.rows, expected.sum}));
        EXPECT_EQ(rejects, std::vector<long>({expected.rejected, expected.rejected}));
    }
    std::string deadLetters() const {
        const std::string letters = scratch.write("letters.toml", trades(broker.url()));
        HostProcess host(other, {"run", "--config", letters, "--idle", "1", "--set", "connection.destinationName=ActiveMQ.DLQ"});
        EXPECT_EQ(host.wait(), 0) << host.errors();
        const std::string said = host.errors();
        return said.substr(said.find("total"), said.find(", 0.000 s") - said.find("total"));
    }
};

TEST_P(Databases, EveryMessageIsThereOnceWhateverIsKilled) {
    Feed feed(scratch, sendersConfig(), GetParam());
    killAll();
    const auto host = runningHost();
    const int sent = feed.finish();
    end(*host, SIGTERM);
    verify("kills", sent);
}

class TakeOver : public Databases {
protected:
    // One that is stopped amidst a transaction keeps the file of SQLite locked for as long as it is.
    void stopBetweenTransactions(const HostProcess& host) const {
        for (host.signal(SIGSTOP); !database->takesRows(); host.signal(SIGSTOP)) {
            host.signal(SIGCONT);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
};

// It holds messages in memory when it comes back, which are somebody else's by then.
TEST_P(TakeOver, AHostThatWasTakenForDeadWritesNothingWhenItComesBack) {
    Feed feed(scratch, sendersConfig(), GetParam());
    const auto first = runningHost();
    const auto second = newHost(other);
    EXPECT_TRUE(within(Seconds(60), [&] { return second->errors().find("waits to take over") != std::string::npos; })) << second->errors();
    flows(*first);
    EXPECT_FALSE(within(Seconds(3.5), [&] { return isReady(*second); })) << "a host at work was taken for dead\n" << second->errors();
    stopBetweenTransactions(*first);
    EXPECT_TRUE(within(Seconds(60), [&] { return isReady(*second); })) << second->errors();
    flows(*second);
    first->signal(SIGCONT);
    // Either it sees what became of its rows, or it does not even get a connection.
    EXPECT_TRUE(within(Seconds(60), [&] {
        const std::string said = first->errors();
        return said.find("waits to take over") != std::string::npos || said.find("already connected") != std::string::npos;
    })) << first->errors();
    flows(*second);
    end(*second, SIGKILL);
    flows(*first);
    end(*first, SIGTERM);
    verify("taken over", feed.finish());
}

std::string nameOfParameter(const ::testing::TestParamInfo<Way>& way) { return nameOf(way.param); }

// Both databases and both kinds of destination; all four pairs in a soak.
std::vector<Way> waysOfKilling() {
    std::vector<Way> ways = {{"sqlite", Destination::kDurable, "apply"}, {"postgresql", Destination::kQueue, "apply"}};
    if (kSoak) ways.insert(ways.end(), {{"sqlite", Destination::kQueue, "append"}, {"postgresql", Destination::kDurable, "append"}});
    return ways;
}
INSTANTIATE_TEST_SUITE_P(Of, Databases, ::testing::ValuesIn(waysOfKilling()), nameOfParameter);

// What was handed to the first host a queue gives out again behind later messages: their order is lost.
std::vector<Way> waysOfTakingOver() {
    std::vector<Way> ways = {{"sqlite", Destination::kQueue, "append"}, {"postgresql", Destination::kDurable, "apply"}};
    if (kSoak) ways.insert(ways.end(), {{"sqlite", Destination::kDurable, "apply"}, {"postgresql", Destination::kQueue, "append"}});
    return ways;
}

INSTANTIATE_TEST_SUITE_P(Of, TakeOver, ::testing::ValuesIn(waysOfTakingOver()), nameOfParameter);

}  // namespace
