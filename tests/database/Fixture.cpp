#include "tests/database/Fixture.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace database {

namespace {

std::string outputOf(const std::string& command) {
    std::string output;
    FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::array<char, 4096> buffer;
    for (size_t count; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), count);
    ::pclose(pipe);
    return output;
}

std::string newFolder() {
    std::string path = testing::TempDir() + "kel-database-XXXXXX";
    return ::mkdtemp(path.data());
}

class Sqlite : public Server {
public:
    ~Sqlite() override { std::filesystem::remove_all(folder_); }
    std::string url() const override { return "sqlite:" + folder_ + "/a b.db"; }
    std::string ask(const std::string& statements) const override {
        std::ofstream(folder_ + "/sql") << statements;
        return outputOf("sqlite3 -nullvalue '~' '" + folder_ + "/a b.db' < " + folder_ + "/sql");
    }

private:
    const std::string folder_ = newFolder();
};

// The server of all tests of a process.
class Cluster {
public:
    Cluster() { start(); }
    ~Cluster() {
        stop("immediate");
        std::filesystem::remove_all(folder_);
    }
    Cluster(const Cluster&) = delete;
    Cluster& operator=(const Cluster&) = delete;

    bool isThere() const { return url_.starts_with("postgresql:"); }
    void start() {
        url_ = outputOf(KEL_SOURCE_DIR "/tools/private-postgresql start " + folder_);
        url_ = url_.substr(0, url_.find('\n'));
    }
    void stop(const std::string& how) const { outputOf(KEL_SOURCE_DIR "/tools/private-postgresql stop " + folder_ + ' ' + how); }
    const std::string& folder() const { return folder_; }
    std::string url(const std::string& database) const {
        std::string url = url_;
        return url.replace(url.find("/postgres?"), std::string("/postgres").size(), '/' + database);
    }

private:
    const std::string folder_ = newFolder();
    std::string url_;
};

Cluster& cluster() {
    static Cluster one;
    return one;
}

class Postgres : public Server {
public:
    Postgres() {
        static int count = 0;
        database_ = "d" + std::to_string(++count);
        run("postgres", "CREATE DATABASE " + database_);
    }
    ~Postgres() override { run("postgres", "DROP DATABASE " + database_ + " WITH (FORCE)"); }
    std::string url() const override { return cluster().url(database_); }
    std::string socket() const override { return cluster().folder() + "/.s.PGSQL.5432"; }
    std::string ask(const std::string& statements) const override { return run(database_, statements); }
    void stop() override { cluster().stop("immediate"); }
    void start() override { cluster().start(); }

private:
    static std::string run(const std::string& database, const std::string& statements) {
        const std::string file = cluster().folder() + "/sql";
        std::ofstream(file) << statements;
        return outputOf("psql -X -q -A -t -P null='~' -f " + file + " '" + cluster().url(database) + "'");
    }
    std::string database_;
};

}  // namespace

std::unique_ptr<Server> makeServer(const std::string& kind) {
    if (kind == "sqlite") return std::make_unique<Sqlite>();
    return cluster().isThere() ? std::make_unique<Postgres>() : nullptr;
}

Messages::Messages(const host::RowType& type, std::vector<Sent> sent) : sent_(std::move(sent)) {
    std::int64_t sequence = 0;
    for (const Sent& one : sent_) {
        host::BatchMessage& message = batch.messages.emplace_back();
        if (!one.bad.empty()) message.reject = host::Reject{host::Stage::kParse, "key", one.bad, "Shares"};
        if (one.bad.empty() && !one.values.empty())
            message.row.reset(new host::ServerRow{&type, type.streamName, one.op, ++sequence, one.values});
    }
    batch.envelopes = this;
}

std::vector<std::string> Messages::ids() {
    std::vector<std::string> all;
    for (const Sent& one : sent_) all.push_back(one.id);
    return all;
}

std::vector<std::string> Messages::replayOf() {
    std::vector<std::string> all;
    for (const Sent& one : sent_) all.push_back(one.replayOf);
    return all;
}

host::MessageCopy Messages::copyOf(size_t message) {
    return {"text", "body of " + sent_[message].id + "\xFF", {{"JMSType", "header", "a \"b\""}, {"n", "Integer", "1"}}};
}

void Sinks::SetUp() {
    server = makeServer(GetParam());
    if (!server) GTEST_SKIP() << "no " << GetParam() << " is installed";
    settings.url = server->url();
    settings.table = "Trades";
    settings.source = "trades";
    settings.mode = SinkMode::kApply;
}

std::unique_ptr<host::RowSink> Sinks::open() {
    std::unique_ptr<host::RowSink> sink = host::makeDatabaseSink(settings, *type);
    sink->open();
    return sink;
}

std::string Sinks::keep(host::RowSink& sink, std::vector<Sent> sent, bool isConfirmed) {
    Messages messages(*type, std::move(sent));
    const Kept kept = sink.keep(messages.batch);
    sink.settled(isConfirmed);
    last = std::move(messages.batch);
    std::ostringstream counts;
    counts << kept.rows << ' ' << kept.rejected << ' ' << kept.repeated;
    return counts.str();
}

}  // namespace database
