// Messages that became no row, where rows go out as text: a file of JSON objects, one a line.
//
// A reject's line has at, message (its ID), stage, key, error, column, format (the kind of message), body
// (bodyHex where that is no text) and envelope; its number in the file is the reject's. A line with replayed
// tells that the reject of that number was sent again.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/process/RowFile.h"
#include "host/rows/RowSink.h"

namespace host {

// A sink that tells of every reject, and keeps it in the file before the batch's rows are handed on; ""
// keeps none. Throws Failure.
std::unique_ptr<RowSink> keepingRejects(std::unique_ptr<RowSink> rows, const std::string& file);

// All rejects of the file. Throws Failure for a file that cannot be read or has lines of another kind; a
// last one that was not written whole counts as none.
std::vector<KeptReject> readRejectFile(const std::string& file);

// The line that tells of a replay.
std::string replayedLine(std::int64_t id);

extern const RowShape kRejectShape;

}  // namespace host
