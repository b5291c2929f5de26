// Databases that go away and come back, and more than one host for a source.
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>

#include "host/process/Clock.h"
#include "host/process/Failure.h"
#include "tests/database/Fixture.h"
#include "tests/database/Proxy.h"

namespace database {
namespace {

class Outages : public Sinks {
protected:
    // A connection that stays open with an uncommitted transaction; its statements take effect as they are written.
    class Client {
    public:
        Client(const Server& server, bool isPostgres)
            : pipe_(::popen((isPostgres ? "psql -X -q '" + server.url() + "' >/dev/null 2>&1"
                                        : "sqlite3 '" + server.url().substr(7) + "' >/dev/null 2>&1")
                                .c_str(),
                            "w")) {}
        ~Client() { ::pclose(pipe_); }
        Client(const Client&) = delete;
        Client& operator=(const Client&) = delete;
        void write(const std::string& statements) const {
            std::fputs((statements + '\n').c_str(), pipe_);
            std::fflush(pipe_);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }

    private:
        FILE* const pipe_;
    };

    static Sent row(const std::string& id, const char* symbol) { return {id, 'i', {text(symbol), number(1), Value()}}; }
    std::string symbols() { return ask("SELECT \"Symbol\" FROM \"Trades\" ORDER BY 1;"); }
};
INSTANTIATE_TEST_SUITE_P(Of, Outages, testing::Values("sqlite", "postgresql"));

TEST_P(Outages, AFileThatIsRemovedTakesNoRowWithIt) {
    if (isPostgres()) GTEST_SKIP() << "it has no file";
    const auto sink = open();
    keep(*sink, {row("1", "A")});
    std::filesystem::remove(server->url().substr(std::string("sqlite:").size()));
    EXPECT_THROW(keep(*sink, {row("2", "B")}), host::Failure);
}

TEST_P(Outages, ALockIsWaitedForAndTold) {
    settings.lockTimeoutMillis = 50;
    const auto sink = open();
    keep(*sink, {row("1", "A")});
    testing::internal::CaptureStderr();
    {
        Client other(*server, isPostgres());
        other.write(isPostgres() ? "BEGIN; LOCK TABLE \"Trades\";" : "BEGIN IMMEDIATE;");
        std::thread release([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(2500));
            other.write("COMMIT;");
        });
        EXPECT_EQ(keep(*sink, {row("2", "B"), row("3", "C")}), "2 0 0");
        release.join();
    }
    const std::string said = errors();
    const std::string reason = isPostgres() ? "a lock is held by somebody else" : "another program writes into its file";
    EXPECT_EQ(said.find("The database does not answer (" + reason + "); 2 messages wait for it, next try in 2 s.\n"), 0U) << said;
    EXPECT_NE(said.find("The database answers again after "), std::string::npos) << said;
    EXPECT_EQ(symbols(), "A\nB\nC\n");
}

TEST_P(Outages, AWaitEndsByItsLimitAndByAStop) {
    settings.lockTimeoutMillis = 50;
    Client other(*server, isPostgres());
    for (const bool isStopped : {false, true}) {
        settings.retrySeconds = isStopped ? 0 : 1;
        const auto sink = open();
        other.write(isPostgres() ? "BEGIN; LOCK TABLE \"Trades\";" : "BEGIN IMMEDIATE;");
        std::thread stop([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
            if (isStopped) sink->stop();
        });
        const auto begin = host::Clock::now();
        const std::string said = failureOf([&] { keep(*sink, {row("1", "A")}); });
        EXPECT_LT(host::secondsBetween(begin, host::Clock::now()), 5);
        stop.join();
        EXPECT_NE(said.find(isStopped ? ", and the stop does not wait for it; its 1 message comes again."
                                      : ") for 1 s, the limit of sink.retrySeconds; its 1 message comes again."),
                  std::string::npos)
            << said;
        other.write("ROLLBACK;");
        EXPECT_EQ(symbols(), "");
        if (!isStopped) continue;
        EXPECT_EQ(keep(*sink, {row("1", "A")}), "1 0 0") << "the tail of a run is kept after its stop";
    }
}

TEST_P(Outages, ASecondHostWaitsAndTheFirstNoticesThatItWasReplaced) {
    auto first = open();
    keep(*first, {row("1", "A")});
    testing::internal::CaptureStderr();
    std::unique_ptr<host::RowSink> second = host::makeDatabaseSink(settings, *type);
    std::atomic<bool> isOpen{false};
    std::thread opening([&] {
        second->open();
        isOpen = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    EXPECT_FALSE(isOpen);
    // The first one's lock falls without its knowing.
    if (isPostgres()) {
        ask("SELECT pg_terminate_backend(pid) FROM pg_locks WHERE locktype = 'advisory' AND granted;");
    } else {
        const std::string file = server->url().substr(7) + ".trades.lock";
        std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() - std::chrono::seconds(60));
    }
    opening.join();
    EXPECT_EQ(keep(*second, {row("1", "A"), row("2", "B")}), "1 0 1");
    std::string said;
    try {
        keep(*first, {row("2", "B"), row("3", "C")});
    } catch (const host::TakenOver& takenOver) {
        said = takenOver.what();
    }
    EXPECT_EQ(said, "Source \"trades\" was taken over by another host; this one writes nothing more for it, and starts again.");
    second.reset();
    first->open();
    EXPECT_EQ(keep(*first, {row("2", "B"), row("3", "C")}), "1 0 1");
    EXPECT_EQ(symbols(), "A\nB\nC\n");
    const std::string told = errors();
    EXPECT_EQ(told.find("Another host writes source \"trades\" since "), 0U) << told;
    EXPECT_NE(told.find(" (pid " + std::to_string(::getpid()) + "); this one waits to take over.\n"), std::string::npos) << told;
    EXPECT_NE(told.find("This host writes source \"trades\" now."), std::string::npos) << told;
}

TEST_P(Outages, AStandbyCanBeStopped) {
    const auto first = open();
    const auto second = host::makeDatabaseSink(settings, *type);
    std::thread stop([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        second->stop();
    });
    EXPECT_EQ(failureOf([&] { second->open(); }), "The command was stopped before it was ready.");
    stop.join();
    settings.source = "another source";
    EXPECT_EQ(failureOf([&] { open(); }), "none") << "sources do not stand in each other's way";
}

// The database is there and yet does not let the start through: its tables wait to be made, or are locked.
TEST_P(Outages, AStartThatMustWaitIsMendedByTheNextTry) {
    settings.lockTimeoutMillis = 50;
    if (!isPostgres()) ask("CREATE TABLE x (a);");
    Client other(*server, isPostgres());
    other.write(isPostgres() ? "BEGIN; SELECT pg_advisory_xact_lock(hashtext('kel-adapter-host'), hashtext('create'));"
                             : "BEGIN EXCLUSIVE;");
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(600));
        other.write("COMMIT;");
    });
    const auto sink = open();
    EXPECT_EQ(keep(*sink, {row("1", "A")}), "1 0 0");
    release.join();
    EXPECT_EQ(symbols(), "A\n");
}

// The one that has nothing to write hears of it too, and does not keep the provider's connection from the other.
TEST_P(Outages, AQuietHostNoticesThatItWasReplaced) {
    settings.leaseSeconds = 1;
    const auto first = open();
    keep(*first, {row("1", "A")});
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    const auto second = open();
    bool isTakenOver = false;
    for (int i = 0; i < 20 && !isTakenOver; ++i) {
        try {
            second->idle();
            first->idle();
        } catch (const host::TakenOver&) {
            isTakenOver = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_TRUE(isTakenOver);
    EXPECT_EQ(keep(*second, {row("2", "B")}), "1 0 0");
}

// Neither a batch that waits nor one that comes behind the other costs the source.
TEST_P(Outages, ABusyHostKeepsItsSource) {
    settings.leaseSeconds = 1;
    settings.lockTimeoutMillis = 50;
    const auto first = open();
    const auto second = host::makeDatabaseSink(settings, *type);
    std::atomic<bool> isOpen{false};
    std::thread opening([&] {
        failureOf([&] { second->open(); });
        isOpen = true;
    });
    for (int i = 0; i < 12; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        keep(*first, {row("a" + std::to_string(i), std::to_string(i).c_str())});
    }
    {
        Client other(*server, isPostgres());
        other.write(isPostgres() ? "BEGIN; LOCK TABLE \"Trades\";" : "BEGIN IMMEDIATE;");
        std::thread release([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(4000));
            other.write("COMMIT;");
        });
        EXPECT_EQ(keep(*first, {row("b", "B")}), "1 0 0");
        release.join();
    }
    EXPECT_FALSE(isOpen);
    second->stop();
    opening.join();
}

TEST_P(Outages, ALinkLeadsToTheSameSource) {
    if (isPostgres()) GTEST_SKIP() << "a server has no file";
    const std::string file = server->url().substr(7), link = file + ".link";
    std::filesystem::create_symlink(file, link);
    settings.url = "sqlite:" + link;
    const auto first = open();
    settings.url = server->url();
    const auto second = host::makeDatabaseSink(settings, *type);
    std::thread stop([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        second->stop();
    });
    EXPECT_EQ(failureOf([&] { second->open(); }), "The command was stopped before it was ready.");
    stop.join();
}

// The first try takes longer than what is worth telling.
TEST_P(Outages, ASlowTryIsToldAtOnce) {
    settings.lockTimeoutMillis = 1200;
    const auto sink = open();
    Client other(*server, isPostgres());
    other.write(isPostgres() ? "BEGIN; LOCK TABLE \"Trades\";" : "BEGIN IMMEDIATE;");
    settings.retrySeconds = 1;
    testing::internal::CaptureStderr();
    EXPECT_NE(failureOf([&] { keep(*sink, {row("1", "A")}); }), "none");
    const std::string said = errors();
    EXPECT_NE(said.find("; 1 message waits for it, next try in 1 s.\n"), std::string::npos) << said;
}

// A full disk, or what looks like it.
TEST_P(Outages, AFullDiskIsWaitedFor) {
    if (isPostgres()) GTEST_SKIP() << "a server's disk is not filled here";
    settings.retrySeconds = 1;
    const auto sink = open();
    keep(*sink, {row("1", "A")});
    rlimit before;
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{10, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const std::string said = failureOf([&] { keep(*sink, {row("2", "B")}); });
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(said.find("The database does not answer ("), 0U) << said;
    EXPECT_EQ(keep(*sink, {row("2", "B")}), "1 0 0");
    EXPECT_EQ(symbols(), "A\nB\n");
}

// The connection is cut while a batch is under way: at its rows, at its commit, and behind its commit, of which nobody then knows
// whether it was done.
TEST_P(Outages, ACutConnectionLosesAndDoublesNothing) {
    if (!isPostgres()) GTEST_SKIP() << "SQLite has no connection";
    Proxy proxy(server->socket());
    settings.url = proxy.url(settings.url);
    settings.mode = SinkMode::kAppend;
    const auto sink = open();
    int sent = 0;
    for (const std::string& words : {std::string("BEGIN"), std::string("COMMIT\0", 7)}) {  // no READ COMMITTED
        for (const auto cut : {Proxy::Cut::kBeforeTheServerHasThem, Proxy::Cut::kWhenTheServerHasDoneThem}) {
            proxy.cutAt(words, cut);
            std::vector<Sent> batch;
            for (int i = 0; i < 50; ++i) batch.push_back(row(std::to_string(++sent), "A"));
            batch.push_back({std::to_string(++sent), 'i', {}, "bad"});
            EXPECT_EQ(keep(*sink, batch), "50 1 0") << words;
        }
    }
    EXPECT_EQ(proxy.cuts(), 4);
    EXPECT_EQ(ask("SELECT count(*), count(DISTINCT kel_message_id) FROM \"Trades\"; SELECT count(*) FROM kel_rejected;"), "200|200\n4\n");
    sink->idle();
}

TEST_P(Outages, AServerThatWasDownIsWaitedFor) {
    if (!isPostgres()) GTEST_SKIP() << "SQLite has no server";
    const auto sink = open();
    keep(*sink, {row("1", "A")});
    testing::internal::CaptureStderr();
    server->stop();
    sink->idle();
    std::thread start([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(2000));
        server->start();
    });
    EXPECT_EQ(keep(*sink, {row("2", "B")}), "1 0 0");
    start.join();
    const std::string said = errors();
    EXPECT_EQ(said.find("The database does not answer (no such file or directory); 1 message waits for it, next try in 2 s.\n"), 0U)
        << said;
    EXPECT_EQ(symbols(), "A\nB\n");
}

// A host that stands still loses its session after the lease; the next batch mends that without a word.
TEST_P(Outages, ALostSessionIsMended) {
    if (!isPostgres()) GTEST_SKIP() << "SQLite has no session";
    settings.leaseSeconds = 1;
    const auto sink = open();
    const std::string count = "SELECT count(*) FROM pg_locks WHERE locktype = 'advisory';";
    for (int i = 0; i < 8; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        sink->idle();
    }
    EXPECT_EQ(ask(count), "1\n") << "signs of life keep it";
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_EQ(ask(count), "0\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(keep(*sink, {row("1", "A")}), "1 0 0");
    EXPECT_EQ(errors(), "");
    EXPECT_EQ(ask("SELECT epoch FROM kel_ledger;"), "1\n");
}

TEST_P(Outages, WhatIsNotAllowedEndsTheRun) {
    if (!isPostgres()) GTEST_SKIP() << "SQLite has no roles";
    open();
    ask("DROP ROLE IF EXISTS poor; CREATE ROLE poor LOGIN; GRANT SELECT, UPDATE ON kel_ledger TO poor; GRANT SELECT ON \"Trades\" TO "
        "poor;");
    settings.url.replace(settings.url.find("user=postgres"), 13, "user=poor");
    const auto sink = open();
    EXPECT_EQ(failureOf([&] { keep(*sink, {row("1", "A")}); }), "The database does not allow it: permission denied for table Trades.");
    ask("DROP OWNED BY poor; DROP ROLE poor;");
    EXPECT_EQ(failureOf([&] { open(); }), "The database refuses the connection: role \"poor\" does not exist.");
}

}  // namespace
}  // namespace database
