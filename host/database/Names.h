// The names that a sink writes to, its own among them.
#pragma once

#include <string>
#include <vector>

#include "host/database/DatabaseKinds.h"
#include "host/database/SinkSettings.h"
#include "host/toolkit/RowType.h"

namespace host {

inline constexpr char kLedgerTable[] = "kel_ledger";
inline constexpr char kRejectedTable[] = "kel_rejected";

// What a row has besides the stream's columns where every row is kept; texts of the stream never name these.
inline constexpr char kOpColumn[] = "kel_op";
inline constexpr char kSeqColumn[] = "kel_seq";
inline constexpr char kMessageIdColumn[] = "kel_message_id";
inline constexpr char kAtColumn[] = "kel_at";

// A name in a statement, and in a sentence.
std::string quotedName(const std::string& name);

// The name by which a database knows it.
std::string knownName(DatabaseKind kind, const std::string& name);

// A sentence for each name of the settings and of the stream's columns that the database would not take as it
// is.
std::vector<std::string> nameProblems(DatabaseKind kind, const SinkSettings& settings,
                                      const std::vector<Column>& columns);

}  // namespace host
