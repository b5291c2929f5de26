// That a host which settles messages itself loses none and repeats none: whatever ends it, at any moment, and
// whatever its output does. At most what waited for one settling comes again, and only behind an end without order.
#include <sys/stat.h>

#include <map>

#include "tests/endtoend/Delivery.h"

namespace {

using namespace endtoend;

constexpr int kRounds = 6;
constexpr int kSoakRounds = 500;
constexpr int kMessagesARound = 600;

struct Source {
    const char* name;
    bool isDurable;
    bool isFix;
    int batchSize;  // messages a settling
};

std::string fixOrder(const char* type, int number) {
    const std::string body = std::string("35=") + type + "|11=A|55=S|54=1|60=20240215-14:31:11|38=" + std::to_string(number) + "|40=1|";
    return "8=FIX.4.4|9=" + std::to_string(body.size()) + "|" + body + "10=000|\n";
}

// Which run wrote which number first, and what was written again.
class Tally {
public:
    Tally(std::string rows, const std::string& column) : rows_(std::move(rows)), key_("\"" + column + "\":") {}

    // What stands in the file since the last call was written by one more run. A line without an end is cut off by the next one.
    void add(bool isInOrder) {
        runs_.push_back({isInOrder, 0});
        const std::string text = read(rows_);
        for (size_t end = text.find('\n', at_); end != std::string::npos; end = text.find('\n', at_)) {
            const int number = std::atoi(text.c_str() + text.find(key_, at_) + key_.size());
            const auto [first, isNew] = firstRun_.emplace(number, runs_.size() - 1);
            if (!isNew) ++runs_[first->second].repeated;
            at_ = end + 1;
        }
    }

    struct Run {
        bool isInOrder;
        int repeated;  // of the rows that it wrote
    };
    const std::vector<Run>& runs() const { return runs_; }

private:
    const std::string rows_;
    const std::string key_;
    size_t at_ = 0;
    std::map<int, size_t> firstRun_;
    std::vector<Run> runs_;
};

class Settling : public Delivery {
protected:
    const Broker broker{scratch};
    std::string config;
    int sent = 0;

    std::string configurationOf(const Source& source) const {
        const std::string url = broker.url() + "?jms.redeliveryPolicy.maximumRedeliveries=-1";
        std::string text = source.isDurable ? durable(broker.url(), source.batchSize) : trades(url);
        if (!source.isFix) return text;
        text = text.replace(0, text.find("[connection]"),
                            "[stream]\nname = \"Orders\"\ncolumns = [ { name = \"ClOrdID\", type = \"string\", key = true }, "
                            "{ name = \"OrderQty\", type = \"integer\" } ]\n");
        const std::string csv = "dataFormat = \"CSV\"\ndelimiter = \",\"\n";
        return text.replace(text.find(csv), csv.size(), "dataFormat = \"FIX\"\nfixVersion = \"4.4\"\nfixMessageType = \"D\"\n");
    }

    // FIX messages of another type come between the orders, and last.
    std::string more(const Source& source) {
        std::string lines;
        for (int i = 0; i < kMessagesARound; ++i) {
            ++sent;
            lines += source.isFix ? fixOrder("D", sent) + fixOrder("8", 0) : numbered(sent, sent);
        }
        return lines;
    }

    // One of five ends at a random moment; true when it was in order.
    bool end(HostProcess& host) {
        const int way = std::uniform_int_distribution<>(0, 4)(random);
        const rlim_t size = std::filesystem::exists(rows) ? std::filesystem::file_size(rows) : 0;
        if (way == 3) host.limit(RLIMIT_FSIZE, {size + random() % 9000, RLIM_INFINITY});  // a full disk
        sleepBetween(0, 0.12);
        if (way == 0) host.signal(SIGKILL);
        if (way != 0) host.signal(SIGTERM);
        if (way == 1) sleepBetween(0, 0.1);
        if (way == 1) host.signal(SIGKILL);
        const int status = host.wait(Seconds(12));
        EXPECT_NE(status, -1) << "it goes on after its stop\n" << host.errors();
        return status == 0;
    }
};

TEST_F(Settling, NothingIsMissingAndAnOrderedStopRepeatsNothing) {
    for (const Source& source :
         {Source{"queue", false, false, 100}, Source{"durable", true, false, 7}, Source{"durable FIX", true, true, 30}}) {
        SCOPED_TRACE(source.name);
        sent = 0;
        rows = scratch.path(source.name);
        column = source.isFix ? "OrderQty" : "Shares";
        config = scratch.write("c.toml", configurationOf(source));
        EXPECT_TRUE(!source.isDurable || HostProcess(scratch, run(config, {"--idle", "0.1"})).wait() == 0);
        const std::string fifo = scratch.path(std::string(source.name) + " fifo");
        ::mkfifo(fifo.c_str(), 0600);
        HostProcess sender(scratch, {"send", "--config", config, "--soh", "|", fifo});
        std::ofstream feed(fifo);
        Tally tally(rows, column);
        const int rounds = kSoak ? kSoakRounds : kRounds;
        for (int i = 0; i <= rounds; ++i) {
            if (i == rounds) {
                feed.close();
                ASSERT_EQ(sender.wait(Seconds(120)), 0) << sender.errors();
            }
            HostProcess host(scratch, i < rounds ? run(config) : run(config, {"--idle", "2"}));
            ASSERT_TRUE(host.isReady()) << host.errors();
            if (i < rounds) feed << more(source) << std::flush;
            tally.add(i < rounds ? end(host) : host.wait() == 0);
        }
        int orderly = 0;
        for (const Tally::Run& run : tally.runs()) {
            EXPECT_LE(run.repeated, run.isInOrder ? 0 : source.batchSize);
            orderly += run.isInOrder ? 1 : 0;
        }
        report(std::string(source.name) + ", " + std::to_string(orderly) + " ordered ends", sent, rounds + 1 - orderly);
    }
}

// A topic forgets what nobody heard, so the rows of each run are without a gap and without a repeat.
TEST_F(Settling, ATopicsRowsAreWithoutAGap) {
    config = scratch.write("c.toml", trades(broker.url(), "TOPIC"));
    const std::string fifo = scratch.path("fifo");
    ::mkfifo(fifo.c_str(), 0600);
    HostProcess sender(scratch, {"send", "--config", config, fifo});
    std::ofstream feed(fifo);
    int heard = 0;
    const int rounds = kSoak ? kSoakRounds : kRounds;
    for (int i = 0; i < rounds; ++i) {
        rows = scratch.path("rows" + std::to_string(i));
        HostProcess host(scratch, run(config));
        ASSERT_TRUE(host.isReady()) << host.errors();
        feed << more({}) << std::flush;
        end(host);
        const auto [different, repeats] = counted();
        heard += different;
        EXPECT_EQ(repeats, 0) << i;
        EXPECT_TRUE(different == 0 || different == highest - lowest + 1) << "round " << i << '\n' << host.errors();
    }
    std::cout << "topic: " << sent << " messages, " << heard << " heard in " << rounds << " runs, 0 missing, 0 repeated\n";
    EXPECT_GT(heard, 0);
}

}  // namespace
