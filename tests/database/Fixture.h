// A sink into each database in turn: batches of rows in, and what the database's own client then shows.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "datatypes/TypeCodes.h"
#include "host/database/SinkSettings.h"
#include "host/rows/Batch.h"
#include "host/rows/DatabaseSink.h"
#include "tests/host/FailureOf.h"

namespace database {

using host::Kept;
using host::SinkMode;
using host::Value;
using Texts = std::vector<std::string>;

// One row of a message; with a reject in place of the row where `bad` is not empty.
struct Sent {
    std::string id;
    char op = 'p';
    std::vector<Value> values = {};
    std::string bad = {};
    std::string replayOf = {};
};

// The messages, and what the connector would tell of them.
class Messages : public host::Envelopes {
public:
    Messages(const host::RowType& type, std::vector<Sent> sent);
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    std::vector<std::string> ids() override;
    std::vector<std::string> replayOf() override;
    host::MessageCopy copyOf(size_t message) override;

    host::Batch batch;

private:
    const std::vector<Sent> sent_;
};

// A database of its own for each test.
class Server {
public:
    virtual ~Server() = default;
    virtual std::string url() const = 0;
    // Runs statements by the database's command-line client; rows a line each, values between "|", null "~".
    virtual std::string ask(const std::string& statements) const = 0;
    virtual std::string socket() const { return ""; }  // of a server
    virtual void stop() {}                             // as by a power cut
    virtual void start() {}
};

// Null where the machine has no such database.
std::unique_ptr<Server> makeServer(const std::string& kind);

class Sinks : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override;

    bool isPostgres() const { return std::string(GetParam()) == "postgresql"; }
    std::unique_ptr<host::RowSink> open();
    // Keeps the messages, confirmed by the provider: "rows rejected repeated".
    std::string keep(host::RowSink& sink, std::vector<Sent> sent, bool isConfirmed = true);
    std::string ask(const std::string& statements) const { return server->ask(statements); }
    std::string errors() { return testing::internal::GetCapturedStderr(); }

    std::unique_ptr<Server> server;
    // Symbol is the key; Shares and Price may be null.
    std::unique_ptr<host::RowType> type = std::make_unique<host::RowType>(
        "Trades", std::vector<host::Column>{
                      {"Symbol", DataTypes::kString, true}, {"Shares", DataTypes::kInteger, false}, {"Price", DataTypes::kFloat, false}});
    host::SinkSettings settings;
    host::Batch last;  // as the sink left it
};

inline Value text(const char* value) { return std::string(value); }
inline Value number(std::int64_t value) { return value; }

}  // namespace database
