// The database cannot do it now, but may later.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

// Nothing of the transaction is kept, except where a commit was under way: then nobody knows before the
// ledger is read. `what` goes into parentheses: "connection refused".
class Unavailable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace host
