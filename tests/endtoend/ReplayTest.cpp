// That a kept message becomes a row once after its cure, however it is brought there and however often.
#include "tests/endtoend/Databases.h"
#include "tests/endtoend/Delivery.h"

namespace {

using namespace endtoend;

constexpr int kCount = 60;  // more than a replay takes at a time

// The number that follows the word in what a host said.
int said(const HostProcess& host, const std::string& word) {
    const std::string errors = host.errors();
    const size_t at = errors.find(word + ' ');
    return at != std::string::npos ? std::atoi(errors.c_str() + at + word.size() + 1) : -1;
}

class Replays : public Delivery {
protected:
    const Broker broker{scratch};
    const Scratch other;  // of a second host
    std::string config;

    // Rejects of all messages, which are of another stream than the one configured first.
    void reject(const std::string& section) {
        config = scratch.write("c.toml", trades(broker.url()) + section);
        HostProcess first(scratch, {"run", "--config", config, "--idle", "0.1", "--set", "stream.name=Orders"});
        ASSERT_EQ(first.wait(), 0) << first.errors();
        send(scratch, config, numbered(1, kCount));
        HostProcess host(scratch, {"run", "--config", config, "--idle", "1", "--set", "stream.name=Orders"});
        ASSERT_EQ(host.wait(), 0) << host.errors();
        ASSERT_EQ(said(host, "bad"), kCount) << host.errors();
    }
    HostProcess rejects(const Scratch& files, const Texts& more) const {
        Texts all = {"rejects", "--config", config};
        all.insert(all.end(), more.begin(), more.end());
        return {files, all};
    }
    size_t listed(const Texts& more = {}) const {
        HostProcess list = rejects(scratch, more);
        EXPECT_EQ(list.wait(), 0) << list.errors();
        return lineCount(scratch.path("rejects.out")) - 1;  // below a heading
    }
};

class DatabaseReplays : public Replays, public ::testing::WithParamInterface<const char*> {
protected:
    std::unique_ptr<Database> database;

    void SetUp() override {
        database = makeDatabase(GetParam(), scratch);
        if (!database) GTEST_SKIP() << "no " << GetParam() << " is installed";
        reject("[sink]\nurl = \"" + database->url() + "\"\ntable = \"Trades\"\nmode = \"append\"\nsource = \"trades\"\n");
        ASSERT_EQ(listed(), size_t{kCount});
    }
    std::vector<long> rowsInTable() const { return database->numbers("SELECT count(*), count(DISTINCT \"Shares\") FROM \"Trades\""); }
    const std::vector<long> eachOnce{kCount, kCount};
};

TEST_P(DatabaseReplays, TwoAtOnceMakeEachRowOnce) {
    HostProcess one = rejects(scratch, {"--replay", "all"}), two = rejects(other, {"--replay", "all"});
    EXPECT_EQ(one.wait(), 0) << one.errors();
    EXPECT_EQ(two.wait(), 0) << two.errors();
    EXPECT_EQ(rowsInTable(), eachOnce);
    EXPECT_EQ(std::max(said(one, "replayed"), 0) + std::max(said(two, "replayed"), 0), kCount) << one.errors() << two.errors();
    EXPECT_EQ(listed(), 0U);
    EXPECT_EQ(listed({"--all"}), size_t{kCount});
}

TEST_P(DatabaseReplays, SentBackTwiceEachIsARowOnce) {
    for (int i = 0; i < 2; ++i) {
        HostProcess back = rejects(scratch, {"--replay", "all", "--send"});
        EXPECT_EQ(back.wait(), 0) << back.errors();
        EXPECT_EQ(said(back, "sent back"), kCount) << back.errors();
    }
    HostProcess host(scratch, {"run", "--config", config, "--idle", "1"});
    EXPECT_EQ(host.wait(), 0) << host.errors();
    EXPECT_EQ(said(host, "total"), 2 * kCount) << host.errors();
    EXPECT_EQ(said(host, "repeated"), kCount) << host.errors();
    EXPECT_EQ(rowsInTable(), eachOnce);
    EXPECT_EQ(listed(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Of, DatabaseReplays, ::testing::Values("sqlite", "postgresql"), [](const auto& kind) { return kind.param; });

TEST_F(Replays, OfAFileMakeRowsAsText) {
    reject("[host]\nrejects = \"" + scratch.path("kept") + "\"\n");
    EXPECT_EQ(listed(), size_t{kCount});
    for (const char* sentence : {"replayed 60, replayed before 0, stay 0", "There is no reject to replay."}) {
        HostProcess replay = rejects(scratch, {"--replay", "all", "--out", rows});
        EXPECT_EQ(replay.wait(), 0) << replay.errors();
        EXPECT_NE(replay.errors().find(sentence), std::string::npos) << replay.errors();
    }
    EXPECT_EQ(counted(), std::pair(kCount, 0));
    EXPECT_EQ(listed(), 0U);
    EXPECT_EQ(listed({"--all"}), size_t{kCount});
}

}  // namespace
