// The databases into which end-to-end tests let a host write: asked by their own clients, and failing on demand.
#pragma once

#include <charconv>
#include <memory>
#include <string>
#include <vector>

#include "tests/endtoend/Support.h"

namespace endtoend {

// What the command writes to standard output.
inline std::string outputOf(const std::string& command) {
    std::string output;
    FILE* pipe = ::popen(command.c_str(), "r");
    std::array<char, 4096> buffer;
    for (size_t count; (count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), count);
    ::pclose(pipe);
    return output;
}

class Database {
public:
    virtual ~Database() = default;
    virtual std::string url() const = 0;
    // A line a row, values between "|"; "" when it does not answer. The statement has no single quotes.
    virtual std::string ask(const std::string& statement) const = 0;
    // Whether somebody else may write now.
    virtual bool takesRows() const { return true; }
    // Writes nothing for the time, which is over when this returns.
    virtual void fail(Seconds time) = 0;
    // The same in another way, for a host that lives all the while.
    virtual void failUnder(const HostProcess& /*host*/, Seconds time) { fail(time); }

    std::vector<long> numbers(const std::string& statement) const {
        std::vector<long> all;
        const std::string text = ask(statement);
        for (const char* at = text.data(); at < text.data() + text.size(); ++at) {
            long number = 0;
            at = std::from_chars(at, text.data() + text.size(), number).ptr;
            all.push_back(number);
        }
        return all;
    }
    long number(const std::string& statement) const {
        const std::vector<long> all = numbers(statement);
        return all.empty() ? 0 : all.front();
    }
};

class SqliteDatabase : public Database {
public:
    explicit SqliteDatabase(const Scratch& scratch) : file_(scratch.path("rows.db")) {}
    std::string url() const override { return "sqlite:" + file_; }
    std::string ask(const std::string& statement) const override {
        return outputOf("sqlite3 -cmd '.timeout 20000' " + file_ + " '" + statement + "' 2>/dev/null");
    }
    bool takesRows() const override {
        return outputOf("sqlite3 -cmd '.timeout 200' " + file_ + " 'BEGIN IMMEDIATE' 'SELECT 1' 2>/dev/null") == "1\n";
    }
    // Another program holds the lock for writing.
    void fail(Seconds time) override {
        outputOf("sqlite3 -cmd '.timeout 20000' " + file_ + " 'BEGIN IMMEDIATE' '.shell sleep " + std::to_string(time.count()) +
                 "' COMMIT 2>/dev/null");
    }
    // A full disk.
    void failUnder(const HostProcess& host, Seconds time) override {
        constexpr rlim_t kLeast = 1 << 17;  // the JVM's own files need some
        host.limit(RLIMIT_FSIZE, {kLeast, RLIM_INFINITY});
        std::this_thread::sleep_for(time);
        host.limit(RLIMIT_FSIZE, {RLIM_INFINITY, RLIM_INFINITY});
    }

private:
    const std::string file_;
};

// The server of all tests of a process.
class PostgresServer {
public:
    PostgresServer() : url_(outputOf(start_ + " 2>/dev/null")) { url_ = url_.substr(0, url_.find('\n')); }
    ~PostgresServer() { stop(); }
    PostgresServer(const PostgresServer&) = delete;
    PostgresServer& operator=(const PostgresServer&) = delete;

    bool isThere() const { return url_.starts_with("postgresql:"); }
    void start() const { outputOf(start_); }
    void stop() const { outputOf(KEL_SOURCE_DIR "/tools/private-postgresql stop " + folder_ + " immediate"); }
    std::string url(const std::string& database) const {
        const std::string all = "/postgres?";
        std::string url = url_;
        return url.replace(url.find(all), all.size() - 1, '/' + database);
    }

private:
    const Scratch scratch_;
    const std::string folder_ = scratch_.path("");
    const std::string start_ = KEL_SOURCE_DIR "/tools/private-postgresql start " + folder_;
    std::string url_;
};

inline PostgresServer& postgresServer() {
    static PostgresServer server;
    return server;
}

class PostgresDatabase : public Database {
public:
    PostgresDatabase() { answer("postgres", "CREATE DATABASE " + name_); }
    ~PostgresDatabase() override { answer("postgres", "DROP DATABASE " + name_ + " WITH (FORCE)"); }
    PostgresDatabase(const PostgresDatabase&) = delete;
    PostgresDatabase& operator=(const PostgresDatabase&) = delete;

    std::string url() const override { return postgresServer().url(name_); }
    std::string ask(const std::string& statement) const override { return answer(name_, statement); }
    void fail(Seconds time) override {
        postgresServer().stop();
        std::this_thread::sleep_for(time);
        postgresServer().start();
    }

private:
    static std::string newName() {
        static int count = 0;
        return "rows" + std::to_string(++count);
    }
    static std::string answer(const std::string& database, const std::string& statement) {
        return outputOf("psql -X -q -A -t -c '" + statement + "' '" + postgresServer().url(database) + "' 2>/dev/null");
    }
    const std::string name_ = newName();
};

// Null where the machine has no such database.
inline std::unique_ptr<Database> makeDatabase(const std::string& kind, const Scratch& scratch) {
    if (kind == "sqlite") return std::make_unique<SqliteDatabase>(scratch);
    return postgresServer().isThere() ? std::make_unique<PostgresDatabase>() : nullptr;
}

}  // namespace endtoend
