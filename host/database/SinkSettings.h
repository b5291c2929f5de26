// Where in a database the rows go, and how.
#pragma once

#include <cstdint>
#include <string>

namespace host {

enum class SinkMode {
    kApply,   // opcodes act on the table, which has the stream's key columns as a unique index
    kAppend,  // every row is kept, with its opcode
};

// The section [sink]. Texts are in UTF-8.
struct SinkSettings {
    std::string url;                // sqlite:FILE or postgresql://...; "": rows go out as text
    std::string schema = "public";  // of PostgreSQL
    std::string table;
    SinkMode mode = SinkMode::kAppend;
    std::string source;        // names the ledger's row
    bool create = true;        // makes a table that is missing
    bool keepsRejects = true;  // else the first row that cannot be kept ends the run
    std::int64_t commitMillis = 200;
    std::int64_t retrySeconds = 0;  // 0: a database that is away is waited for as long as it takes
    std::int64_t statementTimeoutMillis = 30'000;
    std::int64_t lockTimeoutMillis = 5'000;
    std::int64_t ledgerHours = 24;
    std::int64_t leaseSeconds = 60;  // without a sign of life for so long a host loses its source to another
};

}  // namespace host
