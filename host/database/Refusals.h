// Sentences about rows that a database refused, and what they have in common.
#pragma once

#include <optional>
#include <string>

#include "host/database/SinkSettings.h"
#include "host/toolkit/RowType.h"
#include "host/values/Reject.h"
#include "host/values/ServerRow.h"

namespace host {

// A failed statement as the database tells it.
struct DatabaseError {
    std::string code;
    std::string text;
    std::string column;
};

// Why rows of a stream are refused, as the stages' texts say it.
class Refusals {
public:
    // The type must outlive it.
    Refusals(SinkMode mode, const RowType& type) : mode_(mode), type_(type) {}

    // The row's statement changed nothing: why that is a fault, if it is one.
    std::optional<Reject> withoutEffect(const ServerRow& row) const;

    Reject refused(const ServerRow& row, const DatabaseError& error) const;

    // What no database is asked about: a key that is null is found by no comparison, and a U+0000 is not
    // stored, or ends the text for many who read it.
    std::optional<Reject> unfit(const ServerRow& row) const;

private:
    Reject reject(const ServerRow& row, const std::string& text) const;
    std::string keyOf(const ServerRow& row) const;

    const SinkMode mode_;
    const RowType& type_;
};

}  // namespace host
