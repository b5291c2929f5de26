// How a connection to a server of PostgreSQL is made.
#pragma once

#include <memory>
#include <string>

#include "host/database/Patience.h"

struct pg_conn;

namespace host {

struct PostgresFinish {
    void operator()(pg_conn* connection) const;
};
using PostgresHandle = std::unique_ptr<pg_conn, PostgresFinish>;

// To the first of the URL's servers that takes it; each is waited for as long as its connect_timeout says, or
// 10 s, and less after a stop. Throws Unavailable, or Failure where a further try would be in vain. No
// sentence shows a part of the password.
PostgresHandle openPostgres(const std::string& url, const StopRequest& stop);

}  // namespace host
