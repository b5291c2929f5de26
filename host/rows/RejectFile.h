// Messages that became no row, where rows go out as text.
#pragma once

#include <memory>
#include <string>

#include "host/rows/RowSink.h"

namespace host {

// A sink that tells of every reject, and keeps it in the file before the batch's rows are handed on; ""
// keeps none. A line of the file is a JSON object with id, at, source... Throws Failure.
std::unique_ptr<RowSink> keepingRejects(std::unique_ptr<RowSink> rows, const std::string& file);

}  // namespace host
